#include "platform/user/window_support.h"

namespace {

constexpr UINT runTask = WM_APP + 100;

LRESULT CALLBACK TestProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        const auto create = reinterpret_cast<const CREATESTRUCTA*>(lParam);
        SetWindowLongPtrA(window, GWLP_USERDATA,
                          reinterpret_cast<LONG_PTR>(create->lpCreateParams));
    }
    if (message == runTask) {
        (*reinterpret_cast<const std::function<void()>*>(lParam))();
        return 0;
    }
    const auto handler = reinterpret_cast<const Handler*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    const LRESULT result =
        handler && *handler ? (*handler)(window, message, wParam, lParam) : unhandled;
    return result == unhandled ? DefWindowProcA(window, message, wParam, lParam) : result;
}

}  // namespace

HWND MakeWindow(const Handler* handler, HWND parent, DWORD style, INT id) {
    WNDCLASSEXA windowClass = {};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = TestProcedure;
    windowClass.lpszClassName = "test window";
    // Fails for all but the first caller, as it should.
    RegisterClassExA(&windowClass);
    return CreateWindowExA(0, "test window", "", style, 0, 0, 0, 0, parent,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr,
                           const_cast<Handler*>(handler));
}

std::vector<std::string> TextRows(const quennet::Surface& surface) {
    std::vector<std::string> rows;
    for (int y = 0; y < surface.height; ++y) {
        std::string row;
        for (int x = 0; x < surface.width; ++x) {
            const quennet::Cell& cell = surface.At(x, y);
            const char shown = cell.code < 0x80 ? static_cast<char>(cell.code) : '|';
            row += cell.ink == quennet::Ink::disabled ? '-' : shown;
        }
        rows.push_back(row.substr(0, row.find_last_not_of(' ') + 1));
    }
    return rows;
}

std::vector<std::string> DrawnBy(HWND control, int columns, int rows) {
    quennet::Surface surface(columns, rows, quennet::Ink::window);
    const quennet::Area whole = {0, 0, columns, rows};
    quennet::Canvas canvas(surface, whole, whole, false);
    SendMessageA(control, QUENNET_DRAW, 0, reinterpret_cast<LPARAM>(&canvas));
    return TextRows(surface);
}

LoopThread::LoopThread(Handler handler) : handler_(std::move(handler)) {
    std::promise<void> ready;
    std::future<void> running = ready.get_future();
    thread_ = std::thread([this, ready = std::move(ready)]() mutable { Loop(std::move(ready)); });
    running.wait();
}

LoopThread::~LoopThread() {
    Finish();
}

void LoopThread::Loop(std::promise<void> ready) {
    window_ = MakeWindow(&handler_);
    threadId_ = GetCurrentThreadId();
    ready.set_value();
    MSG message = {};
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

void LoopThread::Run(const std::function<void()>& task) const {
    SendMessageA(window_, runTask, 0, reinterpret_cast<LPARAM>(&task));
}

void LoopThread::Finish() {
    if (thread_.joinable()) {
        PostThreadMessageA(threadId_, WM_QUIT, 0, 0);
        thread_.join();
    }
}
