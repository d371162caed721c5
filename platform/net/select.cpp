// Readiness of sockets.
//
// What the layer knows itself is answered without a system call: bytes read ahead make a socket
// readable, room in the send buffer makes it writable. Only what is left open is asked of the
// system, and slept for. An upload asks before and behind each of its small pieces; that question
// is answered without a lock as long as the peer keeps up.

#include <algorithm>
#include <array>
#include <new>
#include <vector>

#include "net/errors.h"
#include "net/socket.h"
#include "net/waiting.h"

using namespace quennet::net;

namespace {

enum class Kind { read, write, except };

struct Question {
    SOCKET number;
    Kind kind;
    bool ready;
    bool deaf;     // the system has nothing more to tell
    short events;  // to be awaited from the system; 0 if the answer cannot change
    SocketReference reference;
};

/// The sockets of all three sets.
class Questions {
  public:
    /// False if the set holds more than it can.
    bool Add(const quennet_fd_set* set, Kind kind) {
        if (set == nullptr) {
            return true;
        }
        if (set->fd_count > FD_SETSIZE) {
            return false;
        }
        for (unsigned index = 0; index < set->fd_count; ++index) {
            all_[count_++] = {set->fd_array[index], kind, false, false, 0, {}};
        }
        return true;
    }

    Question* begin() { return all_.data(); }
    Question* end() { return all_.data() + count_; }

  private:
    std::array<Question, 3 * FD_SETSIZE> all_;
    std::size_t count_ = 0;
};

/// What has come of a round of questions.
struct Round {
    int ready = 0;
    bool gone = false;           // a socket is none, or was closed
    bool connectFailed = false;  // news for whoever waits to write
};

void AnswerRead(SocketUse* use, Question* question) {
    SocketState& state = **use;
    if (!state.stream || state.link == Link::listening) {
        question->events = POLLIN;
        return;
    }
    if (state.link == Link::pending) {
        question->events = POLLOUT;  // the outcome of the connect
        return;
    }
    if (state.link != Link::connected) {
        return;
    }
    question->ready = state.received.Size() > 0 || state.receiveShut || state.error != 0 ||
                      ReceiveAhead(&state, use->Reference()) != ReadAhead::Fill::wouldBlock;
    question->events = POLLIN;
}

void AnswerWrite(SocketUse* use, Question* question) {
    SocketState& state = **use;
    if (!state.stream) {
        question->events = POLLOUT;
        return;
    }
    if (state.link == Link::pending) {
        question->events = POLLOUT;
        return;
    }
    if (state.link != Link::connected) {
        return;
    }
    if (state.unsent.Stalled()) {
        PushUnsent(&state, use->Descriptor());
    }
    question->ready = state.error != 0 || state.sendShut || !state.unsent.Stalled();
    question->events = POLLOUT;
}

void AnswerExcept(SocketUse* use, Question* question) {
    question->ready = (*use)->link == Link::failed;
    if (!question->deaf) {
        question->events = (*use)->link == Link::pending ? POLLOUT : POLLPRI;
    }
}

bool IsNewFailure(SocketState* state, Kind kind) {
    if (kind != Kind::write || state->link != Link::failed || state->failureShown) {
        return false;
    }
    state->failureShown = true;
    return true;
}

/// Asks the layer's own state.
void Answer(Question* question, Round* round) {
    SocketUse use(question->number);
    if (!use) {
        round->gone = true;
        return;
    }
    question->reference = use.Reference();
    question->events = 0;
    SettleConnect(&*use, use.Descriptor());
    if (question->kind == Kind::read) {
        AnswerRead(&use, question);
    } else if (question->kind == Kind::write) {
        AnswerWrite(&use, question);
    } else {
        AnswerExcept(&use, question);
    }
    round->connectFailed |= IsNewFailure(&*use, question->kind);
    round->ready += question->ready ? 1 : 0;
}

Round AnswerAll(Questions* questions) {
    Round round;
    for (Question& question : *questions) {
        Answer(&question, &round);
    }
    return round;
}

/// Takes what poll has seen. True if that answers the question; for the rest the layer's state is
/// to be asked again.
bool TakeEvents(Question* question, short seen) {
    SocketUse use(question->number);
    if (!use || seen == 0) {
        return false;
    }
    if (question->kind == Kind::except && question->events == POLLPRI) {
        question->ready = (seen & POLLPRI) != 0;
        question->deaf = !question->ready;  // an end or an error would only wake us again
    } else if (!use->stream || use->link == Link::listening) {
        question->ready = true;
    }
    return question->ready;
}

/// Sleeps for what is open. Returns the number of questions that the system has answered; `again`
/// tells whether anything has happened at all.
int AskSystem(Questions* questions, const Deadline& deadline, bool* again) {
    std::vector<Awaited> awaited;
    std::vector<Question*> asked;
    for (Question& question : *questions) {
        if (!question.ready && question.events != 0) {
            awaited.push_back({question.reference, question.events, 0});
            asked.push_back(&question);
        }
    }
    *again = AwaitSockets(awaited, deadline) > 0;
    int ready = 0;
    for (std::size_t index = 0; index < asked.size(); ++index) {
        ready += TakeEvents(asked[index], awaited[index].seen) ? 1 : 0;
    }
    return ready;
}

bool HasOpen(Questions* questions) {
    return std::any_of(questions->begin(), questions->end(),
                       [](const Question& question) { return !question.ready; });
}

void KeepReady(Questions* questions, quennet_fd_set* set, Kind kind) {
    if (set == nullptr) {
        return;
    }
    set->fd_count = 0;
    for (const Question& question : *questions) {
        if (question.kind == kind && question.ready) {
            set->fd_array[set->fd_count++] = question.number;
        }
    }
}

/// The number of ready questions, 0 after the time, SOCKET_ERROR.
int AskUntil(Questions* questions, const timeval* timeout) {
    Round round = AnswerAll(questions);
    if (round.gone) {
        return SOCKET_ERROR;
    }
    if (round.ready > 0 && !HasOpen(questions)) {
        return round.ready;
    }
    constexpr int64_t longestSeconds = 1'000'000'000;
    const int64_t milliseconds = timeout == nullptr
                                     ? -1
                                     : std::min<int64_t>(timeout->tv_sec, longestSeconds) * 1000 +
                                           (timeout->tv_usec + 999) / 1000;
    const Deadline deadline = Deadline::After(milliseconds);
    while (round.ready == 0 && !round.connectFailed) {
        bool again = false;
        const int answered = AskSystem(questions, deadline, &again);
        if (!again || answered > 0) {
            return answered;
        }
        round = AnswerAll(questions);
        if (round.gone) {
            return Fail(WSAENOTSOCK);
        }
    }
    bool again = false;
    return round.ready > 0 ? round.ready + AskSystem(questions, Deadline::After(0), &again) : 0;
}

bool IsEmpty(const quennet_fd_set* set) {
    return set == nullptr || set->fd_count == 0;
}

/// Whether the only question is one for writing. That is what an uploading caller asks for each
/// piece that it sends.
bool AsksOneWriter(const quennet_fd_set* readers, const quennet_fd_set* writers,
                   const quennet_fd_set* excepts) {
    return writers != nullptr && writers->fd_count == 1 && IsEmpty(readers) && IsEmpty(excepts);
}

}  // namespace

int quennet_select(int, quennet_fd_set* readers, quennet_fd_set* writers, quennet_fd_set* excepts,
                   const timeval* timeout) try {
    if (!Started()) {
        return SOCKET_ERROR;
    }
    if (timeout != nullptr && (timeout->tv_sec < 0 || timeout->tv_usec < 0)) {
        return Fail(WSAEINVAL);
    }
    if (AsksOneWriter(readers, writers, excepts) && IsKnownWritable(writers->fd_array[0])) {
        return 1;
    }
    Questions questions;
    if (!questions.Add(readers, Kind::read) || !questions.Add(writers, Kind::write) ||
        !questions.Add(excepts, Kind::except) || questions.begin() == questions.end()) {
        return Fail(WSAEINVAL);
    }
    if (readers != nullptr && readers->fd_count > 0) {
        PushUnsentOfThread();
    }
    const int result = AskUntil(&questions, timeout);
    if (result == SOCKET_ERROR) {
        return SOCKET_ERROR;
    }
    KeepReady(&questions, readers, Kind::read);
    KeepReady(&questions, writers, Kind::write);
    KeepReady(&questions, excepts, Kind::except);
    return result;
} catch (const std::bad_alloc&) {
    return Fail(WSAENOBUFS);
}

int quennet_fd_isset(SOCKET socket, const quennet_fd_set* set) {
    const SOCKET* const end = set->fd_array + std::min<unsigned>(set->fd_count, FD_SETSIZE);
    return std::find(set->fd_array, end, socket) != end ? 1 : 0;
}

void quennet_fd_add(SOCKET socket, quennet_fd_set* set) {
    if (set->fd_count < FD_SETSIZE && quennet_fd_isset(socket, set) == 0) {
        set->fd_array[set->fd_count++] = socket;
    }
}

void quennet_fd_remove(SOCKET socket, quennet_fd_set* set) {
    SOCKET* const end = set->fd_array + std::min<unsigned>(set->fd_count, FD_SETSIZE);
    SOCKET* const rest = std::remove(set->fd_array, end, socket);
    set->fd_count = static_cast<unsigned>(rest - set->fd_array);
}
