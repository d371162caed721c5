#include "find/find_test.h"

#include "find/find_store.h"
#include "hostkit/listing.h"

using namespace quennet;

namespace {

constexpr char controlClass[] = "FindTestControl";

FindTest* current = nullptr;

}  // namespace

FindTest::FindTest() {
    current = this;
    services.Replace(ShellService::readDirectory, &ReadDirectory);
    find.session = session;
    find.separator = '\\';
    find.list = Host().Loop().Invoke([] {
        WNDCLASSEXA description = {};
        description.cbSize = sizeof description;
        description.lpfnWndProc = ControlProc;
        description.lpszClassName = controlClass;
        RegisterClassExA(&description);
        return CreateWindowExA(0, controlClass, "", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr,
                               nullptr);
    });
    find.statusBar = find.list;
}

FindTest::~FindTest() {
    FreeStore(&find);
    SendMessageA(find.list, WM_CLOSE, 0, 0);
    current = nullptr;
}

DirEntry* FindTest::ReadDirectory(const char* path, FtpHandle*, u32 option) {
    current->reads.push_back(std::string(path) + " " + std::to_string(option));
    if (current->onRead) {
        current->onRead(path);
    }
    const auto found = current->listings.find(path);
    if (found == current->listings.end()) {
        return nullptr;
    }
    hostkit::Listing listing;
    for (const Entry& entry : found->second) {
        listing.Append({entry.name, entry.date, entry.time, entry.attributes, entry.size});
    }
    return static_cast<DirEntry*>(listing.Release());
}

LRESULT CALLBACK FindTest::ControlProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const bool isOurs = current != nullptr && (message >= WM_USER);
    return isOurs ? current->Answer(message, wParam, lParam)
                  : DefWindowProcA(window, message, wParam, lParam);
}

LRESULT FindTest::Answer(UINT message, WPARAM wParam, LPARAM lParam) {
    const std::lock_guard lock(shownMutex_);
    switch (message) {
        case LVM_SETITEMCOUNT:
            shown_.push_back("rows " + std::to_string(wParam));
            return TRUE;
        case SB_SETTEXTA:
            shown_.push_back("pane " + std::to_string(wParam) + ": " +
                             reinterpret_cast<const char*>(lParam));
            return TRUE;
        case LVM_GETITEMCOUNT:
            return static_cast<LRESULT>(find.index.count);
        case LVM_GETNEXTITEM:
            return -1;
        default:
            return 0;
    }
}

void FindTest::Walk(const std::string& path, u32 options, const std::string& mask) {
    FindRun run = {};
    run.find = &find;
    run.options = options;
    run.filter = find.filter;
    StoreText(run.mask, findMaskSize, mask.c_str());
    WalkDirectory(path.c_str(), &run);
}

void FindTest::Store(const std::string& directory, const std::vector<Entry>& entries) {
    const u32 number = AppendDirectory(&find, directory.c_str());
    for (const Entry& entry : entries) {
        char scratch[findScratchSize] = {};
        auto* record = reinterpret_cast<FindRecord*>(scratch);
        record->length = static_cast<u16>(sizeof(FindRecord) + entry.name.size());
        record->extension =
            static_cast<u16>(std::min(entry.name.rfind('.'), entry.name.size() - 1) + 1);
        record->directoryNumber = directory.empty() ? 0 : number;
        record->icon = -1;
        record->size = entry.size;
        record->attributes = entry.attributes;
        record->date = entry.date;
        record->time = entry.time;
        StoreText(scratch + offsetof(FindRecord, name), findNameSize, entry.name.c_str());
        ASSERT_TRUE(AppendHit(&find, record));
    }
    IndexHits(&find);
}

std::vector<std::string> FindTest::Hits() const {
    std::vector<std::string> hits;
    for (u32 row = 0; row < RowCount(&find); ++row) {
        const FindRecord* record = HitAtRow(&find, row);
        const FindDirRecord* folder = DirectoryByNumber(&find, record->directoryNumber);
        hits.push_back(std::string(folder != nullptr ? folder->path : "?") + ": " + record->name);
    }
    return hits;
}

std::vector<std::string> FindTest::Shown() const {
    const std::lock_guard lock(shownMutex_);
    return shown_;
}
