// The demonstration: the main job of the module on a server of its own, through messages 1, 24, 26,
// 29, 39 and 25 alone, but for 23 and 48, which tell hostkit whose listing it has and its text.
// Each step is proved by what the host got, by the bytes on the disk, and by the commands that the
// server heard; a difference ends it.

#include <algorithm>
#include <atomic>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

#include "client.h"
#include "commands.h"
#include "demo_files.h"
#include "failure.h"
#include "listing_output.h"
#include "loopback/server.h"
#include "module_host.h"
#include "standard_output.h"
#include "terminal_text.h"

namespace cli {

namespace {

using hostkit::Listing;
using hostkit::ListingEntry;
using hostkit::u16;
using hostkit::u64;
using quennet::MessageNumber;

constexpr std::size_t partSize = 300'000;
constexpr std::size_t overlap = 512;  // compared before a resume
constexpr u16 listedDate = (2001 - 1980) << 9 | 7 << 5 | 19;
constexpr u16 listedTime = 14 << 11 | 22 << 5;
constexpr char mismatchLine[] = "Not the same file!";
constexpr char mvsSystem[] = "MVS is the operating system of this server";
constexpr char dosSystem[] = "Windows_NT";

// Stands in for the module's function and notes the messages.
std::mutex messageMutex;
std::set<MessageNumber> messages;
quennet::ModuleFunction moduleFunction = nullptr;

hostkit::i32 NoteMessage(const quennet::HostMessage* message) {
    {
        const std::lock_guard lock(messageMutex);
        messages.insert(static_cast<MessageNumber>(message->message));
    }
    return moduleFunction(message);
}

quennet::ModuleFunction WithNotes(quennet::ModuleFunction function) {
    moduleFunction = function;
    return NoteMessage;
}

std::atomic<u16> changedDirectory = 0;  // cookie of the change that is done

extern "C" {

static void NoteDirectory(u16 cookie, const char*) {
    changedDirectory = cookie;
    hostkit::Host::Current()->Loop().Wake();
}
}

/// What a listing is to hold.
struct Expected {
    std::string name;
    u64 size;
    bool isDirectory;
    u16 time;
};

loopback::Options ServerOptions(const DemoFiles& files) {
    loopback::Options options;
    options.root = files.Served();
    options.formats = {{std::string("/") + demoMainframe, loopback::ListFormat::mvs},
                       {std::string("/") + demoDos, loopback::ListFormat::dos}};
    return options;
}

class Demo {
  public:
    Demo(hostkit::Host& host, Watch& watch)
        : host_(host),
          watch_(watch),
          server_(ServerOptions(files_)),
          connection_(host, {.console = [this](const std::string& line) { TakeLine(line); },
                             .askPassword = {},
                             .reconnectFailed = {}}) {}

    void Run() {
        Connect("24: connects, and shows the console of the connection");
        ListRoot();
        DownloadWhole();
        DownloadRest();
        DownloadDifferent();
        Disconnect();
        ListOtherSystem("an MVS", mvsSystem, demoMainframe,
                        {{demoDataset, demoDatasetSize, false, 0}, {demoLibrary, 0, true, 0}});
        ListOtherSystem("a DOS", dosSystem, demoDos,
                        {{demoProgram, demoProgramSize, false, listedTime},
                         {demoDosFolder, 0, true, listedTime}});
        CheckMessages();
        Say("\nDone: every step was proved.");
    }

  private:
    void Connect(const std::string& title) {
        Title(title);
        hostkit::ConnectRequest request;
        request.host = "127.0.0.1:" + std::to_string(server_.Port());
        const Watch::Operation operation(watch_, connection_, Watch::Kind::command);
        const hostkit::ConnectResult result = connection_.Connect(request);
        Check(result.Connected(), "the connection stands", result.text);
        Check(ConsoleShows("230"), "the console shows the login");
    }

    void Disconnect() {
        Title("25: disconnects");
        const Watch::Operation operation(watch_, connection_, Watch::Kind::farewell);
        connection_.Disconnect();
        Check(!connection_.Connected() && Heard("QUIT"), "the server has heard QUIT");
    }

    void ListRoot() {
        Title("26: lists the directory");
        ListAndCheck({{demoMusic, demoMusicSize, false, 0},
                      {demoNotes, sizeof(demoNotesText) - 1, false, 0},
                      {demoMainframe, folderSize, true, 0},
                      {demoDos, folderSize, true, 0}});
    }

    void ListOtherSystem(const std::string& whose, const char* system, const std::string& directory,
                         const std::vector<Expected>& expected) {
        server_.SetSystem(system);
        Connect("24: connects to " + whose + " system");
        Title("29: changes to /" + directory);
        ChangeDirectory(directory);
        Title("26: reads " + whose + " listing");
        ListAndCheck(expected);
        Disconnect();
    }

    void ChangeDirectory(const std::string& directory) {
        const Watch::Operation operation(watch_, connection_, Watch::Kind::command);
        const u16 cookie = host_.GetPanels().NextCookie();
        const quennet::DirectoryChangedCallback callback = NoteDirectory;
        host_.Send(MessageNumber::changeDirAsync, directory.c_str(), cookie, connection_.Handle(),
                   callback);
        const bool changed = host_.Loop().WaitUntil([&] { return changedDirectory == cookie; },
                                                    std::chrono::seconds(10));
        Check(changed, "the callback has told of the change");
    }

    void ListAndCheck(const std::vector<Expected>& expected) {
        hostkit::ListResult result;
        {
            const Watch::Operation operation(watch_, connection_, Watch::Kind::data);
            result = connection_.List();
        }
        Check(result.done, "the listing has come", result.text);
        Options options;
        options.longForm = true;
        ListingFormat format(options, false);
        std::size_t count = 0;
        for (const ListingEntry& entry : result.entries) {
            count += IsShown(entry) ? 1 : 0;
            format.Measure(entry);
        }
        for (const ListingEntry& entry : result.entries) {
            if (IsShown(entry)) {
                Say("    " + format.Line(entry).substr(0, format.Line(entry).size() - 1));
            }
        }
        const bool same = count == expected.size() &&
                          std::all_of(expected.begin(), expected.end(), [&](const Expected& each) {
                              return std::count_if(result.entries.begin(), result.entries.end(),
                                                   [&](const ListingEntry& entry) {
                                                       return Fits(entry, each);
                                                   }) == 1;
                          });
        Check(same, "names, sizes, kinds and dates are those on the server's disk");
    }

    static bool Fits(const ListingEntry& entry, const Expected& expected) {
        return NameOf(entry) == expected.name && entry.IsDirectory() == expected.isDirectory &&
               (expected.size == folderSize || entry.size == expected.size) &&
               entry.date == listedDate && entry.time == expected.time;
    }

    void DownloadWhole() {
        Title("39: downloads a file");
        Download("whole.bin");
        Check(Heard("TYPE I"), "it went as type I");
    }

    void DownloadRest() {
        Title("39: resumes a partial download of " + std::to_string(partSize) + " bytes");
        DemoFiles::Write(files_.Local("part.bin"), files_.Music().substr(0, partSize));
        Download("part.bin");
        Check(Heard(RestCommand()),
              "the server has heard " + RestCommand() + ", the size less 512");
        Check(HeardTimes("RETR ") == 1 && !ConsoleShows(mismatchLine),
              "the 512 bytes compared equal, and only the rest came");
    }

    void DownloadDifferent() {
        Title("39: meets a partial file that is a different one");
        DemoFiles::Write(files_.Local("other.bin"), std::string(partSize, 'x'));
        Download("other.bin");
        Check(Heard(RestCommand()), "the server has heard " + RestCommand());
        Check(ConsoleShows(mismatchLine), std::string("the console shows ") + mismatchLine);
        Check(HeardTimes("RETR ") == 2, "then the whole file came");
    }

    void Download(const std::string& localName) {
        const std::string local = files_.Local(localName);
        const hostkit::DownloadRequest request{demoMusic, local, demoMusicSize, listedDate,
                                               listedTime};
        hostkit::TransferOperation operation;
        operation.confirm = [](const quennet::TransferItem&, hostkit::u32) {
            return hostkit::ConfirmAnswer::goOn;
        };
        hostkit::TransferResult result;
        {
            const Watch::Operation running(watch_, connection_, Watch::Kind::data);
            result = connection_.Download(request, operation);
        }
        Check(result.Done(), "the server has confirmed the transfer", result.text);
        Check(DemoFiles::Read(local) == files_.Music(),
              "the local file holds the server's " + std::to_string(demoMusicSize) + " bytes");
    }

    void CheckMessages() {
        const std::set<MessageNumber> expected = {
            MessageNumber::setTables,    MessageNumber::connect,
            MessageNumber::disconnect,   MessageNumber::listDirectory,
            MessageNumber::getFile,      MessageNumber::changeDirAsync,
            MessageNumber::getDirectory, MessageNumber::saveRawListing,
        };
        const std::lock_guard lock(messageMutex);
        Check(
            messages == expected,
            "messages 1, 24, 25, 26, 29 and 39 were sent, with 23 and 48 beside 26, and no other");
    }

    static std::string RestCommand() { return "REST " + std::to_string(partSize - overlap); }

    /// A step begins; what was said before does not prove it.
    void Title(const std::string& title) {
        CheckVerdict();
        Say("\nMessage " + title + ".");
        server_.ClearLog();
        const std::lock_guard lock(mutex_);
        consoleLines_.clear();
    }

    /// `words`: what the server said, if it does not hold.
    void Check(bool holds, const std::string& what, const std::string& words = {}) {
        CheckVerdict();
        if (!holds) {
            throw Failure(ExitStatus::failed, "this does not hold: " + what + "; " + words);
        }
        Say("  ok: " + what);
    }

    void CheckVerdict() const {
        if (watch_.Ended()) {
            throw Failure(ExitStatus::failed, watch_.Reason());
        }
    }

    int HeardTimes(const std::string& beginning) const {
        const std::vector<std::string> commands = server_.Commands();
        return static_cast<int>(std::count_if(
            commands.begin(), commands.end(),
            [&](const std::string& command) { return command.starts_with(beginning); }));
    }
    bool Heard(const std::string& beginning) const { return HeardTimes(beginning) > 0; }

    bool ConsoleShows(const std::string& beginning) {
        const std::lock_guard lock(mutex_);
        return std::any_of(consoleLines_.begin(), consoleLines_.end(),
                           [&](const std::string& line) { return line.starts_with(beginning); });
    }

    void TakeLine(const std::string& line) {
        watch_.Moved();
        {
            const std::lock_guard lock(mutex_);
            consoleLines_.push_back(line);
        }
        try {
            Say("  | " + line);
        } catch (const Failure&) {
            // Nobody reads any more; the next step says so.
        }
    }

    void Say(const std::string& line) {
        const std::lock_guard lock(outputMutex_);
        std::string text = line.starts_with('\n') ? "\n" : "";
        text += HarmlessText(line.substr(text.size())) + "\n";
        output_.Write(text);
        output_.Flush();
    }

    static constexpr u64 folderSize = ~u64{0};  // whatever the file system says

    hostkit::Host& host_;
    Watch& watch_;
    DemoFiles files_;
    loopback::Server server_;
    std::mutex outputMutex_;
    StandardOutput output_;
    std::mutex mutex_;
    std::vector<std::string> consoleLines_;
    hostkit::Connection connection_;  // behind what its lines go into
};

}  // namespace

void RunDemo(const Options&, Watch& watch) {
    RunWithModule(
        {}, [&](hostkit::Host& host) { Demo(host, watch).Run(); }, WithNotes);
}

}  // namespace cli
