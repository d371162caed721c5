// A small host for the Quennet module: lists a directory of an FTP server and downloads one file of
// it, without a person. Everything that a host must have is here and nothing else; host-guide.md
// tells the rest.
//
//     FTP_PASSWORD=... small_host MODULE HOST[:PORT] USER DIRECTORY FILE TARGET
//
// The listing goes to standard output, the log of the connection to standard error. Exit status: 0
// done, 1 failed, 2 wrong arguments. A TARGET that holds the beginning of the file is completed;
// any other TARGET that exists is left alone.
//
// Two threads. The main thread owns the windows and serves their messages from the first to the
// last: time-outs come to it. The job thread sends the messages of the module that block.
//
//     main thread                     the module's threads              job thread
//     message 1, message 24 --------> login
//     1074, message 46 <------------- connected
//                      -------------> change of directory
//     directoryIsTried <------------- setForeground
//                      ------------------------------------------------> messages 26, 39
//     jobIsDone, message 25 <------------------------------------------- end
//                           --------> QUIT
//     handleIsGone, end <------------ freeHandle

#define _POSIX_C_SOURCE 200809L
#ifndef _FILE_OFFSET_BITS
#define _FILE_OFFSET_BITS 64  // large files in a 32-bit build too
#endif

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <windows.h>

#include "quennet_host.h"

// Most services of this host need not know all that they are told.
#pragma GCC diagnostic ignored "-Wunused-parameter"

#define WORD_OF(value) ((QuennetWord)(value))

// Messages of this host to its own window.
enum { directoryIsTried = WM_APP, jobIsDone, handleIsGone };

// Bytes that a field of the connection dialog takes, and a path in a record.
enum { longestField = 79, longestPath = QUENNET_PATH_SIZE - 1 };

// The numbers of the one connection, which the module hands back.
enum { panelId = 1, cookie = 1 };

static const char section[] = "Small host";  // this host's main section in the settings

// What is to be done.
static const char* serverName;
static const char* user;
static const char* password;
static const char* directory;
static const char* file;
static const char* target;

// What the module is given to keep, or writes.
static QuennetFunction module;
static QuennetWord holder;  // the address of the handle; 0 without a connection
static CRITICAL_SECTION listLock;
static int32_t currentSiteId;
static uint32_t passwordKey = 1;  // no password is stored, so any key will do
static uint32_t socketUses;

static HWND mainWindow;

// What other threads set for the main thread; the message that they post then hands it over.
static int isInDirectory;
static int status = 1;  // of the program

static int32_t Send(QuennetWord number, const QuennetWord words[7]) {
    const QuennetMessage message = {number,   words[0], words[1], words[2],
                                    words[3], words[4], words[5], words[6]};
    return module(&message);
}

/// Sends one message of the module with its arguments in their order; those left out are 0.
#define SEND(number, ...) Send(number, (const QuennetWord[7]){__VA_ARGS__})

// ---- Text ---------------------------------------------------------------------------------------

/// Prints a line for a person. The server's words are in it: control characters, which a terminal
/// would obey, are made harmless, those of UTF-8 (C2 80 to C2 9F) too.
static void PrintLine(FILE* stream, const char* before, const char* text) {
    fputs(before, stream);
    for (const unsigned char* byte = (const unsigned char*)text; *byte != 0; ++byte) {
        const int isControl =
            *byte < ' ' || *byte == 0x7F || (*byte == 0xC2 && (byte[1] & 0xE0) == 0x80);
        putc(isControl ? '?' : *byte, stream);
    }
    putc('\n', stream);
}

/// Adds a text behind the one that is there, never past `size` bytes with the terminator.
static void AppendText(char* text, const char* added, uint32_t size) {
    const size_t length = strnlen(text, size);
    if (length < size) {
        snprintf(text + length, size - length, "%s", added);
    }
}

static void ConsolePrint(QuennetWindowNumber window, const char* format, ...) {
    char line[4200];  // a line of the server has at most 4096 bytes; what is longer is cut
    va_list values;
    va_start(values, format);
    vsnprintf(line, sizeof line, format, values);
    va_end(values);
    PrintLine(stderr, "  | ", line);
}

static void ShowMessage(QuennetWindowNumber window, uint32_t textId) {
    fprintf(stderr, "small_host: message %u of the module\n", textId);
}

static void ReportError(QuennetWindow owner, uint32_t textId, QuennetWord caption, uint32_t icon) {
    fprintf(stderr, "small_host: error %u of the module\n", textId);
}

static uint32_t NameOffset(const char* path) {
    const char* slash = strrchr(path, '/');
    return slash != NULL ? (uint32_t)(slash + 1 - path) : 0;
}

// ---- Memory -------------------------------------------------------------------------------------

static void* Alloc(QuennetWord size) {
    return calloc(1, size);
}

static void Free(void** pointer) {
    free(*pointer);
    *pointer = NULL;
}

static int32_t BufferAppend(QuennetGrowBuffer* buffer, const void* data, uint32_t size) {
    const QuennetWord needed = buffer->used + size;
    if (needed < size) {
        return 1;
    }
    if (needed > buffer->host || buffer->base == 0) {  // `host` is the capacity here
        const QuennetWord capacity = needed + needed / 2 + 256;
        void* grown = capacity < needed ? NULL : realloc((void*)buffer->base, capacity);
        if (grown == NULL) {
            return 1;
        }
        buffer->base = WORD_OF(grown);
        buffer->host = capacity;
    }
    if (size > 0) {
        memcpy((char*)buffer->base + buffer->used, data, size);
    }
    buffer->used = needed;
    ++buffer->count;
    return 0;
}

// ---- Dialog and settings ------------------------------------------------------------------------

// Message 24 opens a dialog that shows the first site of the settings. Nobody sees it: the settings
// hold the site that is wanted, and OK is pressed as soon as the dialog has read them.

static void InitDialog(QuennetWindow dialog) {
    enum { okButton = 99 };
    PostMessageA(dialog, WM_COMMAND, okButton, 0);
}

static void ApplyDialogTexts(QuennetWindow window, const uint16_t* table) {}

static void GetProfilePath(QuennetWord profile, char* path) {
    path[0] = '\0';  // the name is only handed back to the services below
}

static void ReadSetting(const char* name, const char* key, const char* standard, char* buffer,
                        uint32_t size, const char* path) {
    const struct {
        const char* section;
        const char* key;
        const char* value;
    } settings[] = {
        {"FTP", "M1", "server"},              // the site's label
        {"FTP", "H1", serverName},            // HOST[:PORT]
        {"FTP", "U1", user},                  // "anonymous" makes the login anonymous
        {"FTP", "O1", "8"},                   // QUENNET_SITE_PASSIVE
        {section, "MAILADDR", "anonymous@"},  // the password of an anonymous login
    };
    const char* value = standard;
    for (size_t i = 0; i < sizeof settings / sizeof settings[0]; ++i) {
        if (strcmp(settings[i].section, name) == 0 && strcmp(settings[i].key, key) == 0) {
            value = settings[i].value;
        }
    }
    snprintf(buffer, size, "%s", value);
}

static void ReadSection(const char* name, char* buffer, uint32_t size, const char* path) {
    if (size > 0) {
        buffer[0] = '\0';
    }
}

// What the dialog stores is not kept.

static void WriteSetting(const char* name, const char* key, const char* value, const char* path) {}

static void WriteSection(const char* name, const char* text, const char* path) {}

/// Asked when the server wants a password and the site has none, as here. 0 is a cancel.
static int32_t AskPassword(QuennetWindow owner, QuennetPasswordQuestion* question) {
    if (password == NULL || strlen(password) >= question->size) {
        fputs("small_host: FTP_PASSWORD is not set, or too long\n", stderr);
        return 0;
    }
    strcpy((char*)question->buffer, password);
    return 1;
}

// ---- Local files --------------------------------------------------------------------------------

// The handle of an open file is its stream. 0 is success everywhere.

static int32_t Open(const char* path, const char* mode, QuennetWord* handle) {
    FILE* stream = fopen(path, mode);
    if (stream == NULL) {
        perror(path);
    }
    *handle = WORD_OF(stream);
    return stream == NULL;
}

static int32_t CreateLocalFile(QuennetWindow window, const char* path, QuennetWord* handle) {
    return Open(path, "wb", handle);
}

static int32_t OpenLocalFile(const char* path, QuennetWord* handle, uint32_t access) {
    return Open(path, access == QUENNET_READ ? "rb" : "r+b", handle);
}

static int32_t OpenLocalFileAt(QuennetWindow console, const char* path, QuennetWord* handle,
                               uint32_t access) {
    return OpenLocalFile(path, handle, access);
}

static int32_t CloseLocalFile(QuennetWord handle) {
    return fclose((FILE*)handle) != 0;
}

static int32_t ReadLocalFile(QuennetWord handle, void* buffer, uint32_t size) {
    return fread(buffer, 1, size, (FILE*)handle) != size;
}

static int32_t WriteLocalFile(QuennetWindow window, QuennetWord handle, const void* data,
                              uint32_t length) {
    return fwrite(data, 1, length, (FILE*)handle) != length;
}

static int32_t SeekLocalFile(QuennetWord handle, QuennetWord position) {
    return fseeko((FILE*)handle, (off_t)position, SEEK_SET) != 0;
}

static int32_t QueryLocalFileSize(uint32_t zero, QuennetWord handle, uint64_t* size) {
    struct stat info;
    const int32_t failure = fstat(fileno((FILE*)handle), &info);
    *size = failure == 0 ? (uint64_t)info.st_size : 0;
    return failure;
}

static int32_t FileCheck(const char* path) {
    return access(path, F_OK) != 0;
}

/// Files keep the time of their making here.
static int32_t SetLocalFileTime(QuennetWord handle, uint32_t date, uint32_t time) {
    return 0;
}

static int32_t GetTransferType(const char* path) {
    return 'I';  // bytes as they are
}

static void AddProgress(QuennetWord record, uint32_t bytes) {}

// ---- The life of the connection -----------------------------------------------------------------

static void PanelConnected(uint32_t panel, QuennetSiteRecord* site) {}

static void PanelClosed(QuennetSession* session, uint32_t panel) {}

// Message 46 tells of its end by setForeground, and of success by a callback in front of that.

static void BeginGoTo(uint16_t number, uint8_t panel) {}

static void EndGoTo(uint16_t number, const char* name) {
    isInDirectory = 1;
}

static void SetForeground(QuennetWindow window) {
    PostMessageA(mainWindow, directoryIsTried, 0, 0);
}

/// The last that is heard of a connection. Also called without one.
static void* FreeHandle(void* handle) {
    free(handle);
    if (handle != NULL) {
        PostMessageA(mainWindow, handleIsGone, 0, 0);
    }
    return NULL;
}

// ---- The tables ---------------------------------------------------------------------------------

// The words that are left out stay 0: the find window and the ping dialog use them, which this host
// does not open, and messages that it does not send.

static const QuennetCoreServices coreServices = {
    .getProfilePath = GetProfilePath,
    .applyDialogTexts = ApplyDialogTexts,
    .consolePrint = ConsolePrint,
    .showMessage = ShowMessage,
    .initDialog = InitDialog,
    .alloc = Alloc,
    .free = Free,
    .copyText = AppendText,
};

static const QuennetShellServices shellServices = {
    .currentSiteId = &currentSiteId,
    .listLock = &listLock,
    .getTransferType = GetTransferType,
    .fileCheck = FileCheck,
    .closeFile = CloseLocalFile,
    .createFile = CreateLocalFile,
    .queryFileSize = QueryLocalFileSize,
    .openFile = OpenLocalFile,
    .openFileAt = OpenLocalFileAt,
    .readFile = ReadLocalFile,
    .seekFile = SeekLocalFile,
    .setFileTime = SetLocalFileTime,
    .writeFile = WriteLocalFile,
    .addProgress = AddProgress,
    .panelClosed = PanelClosed,
    .panelConnected = PanelConnected,
    .askPassword = AskPassword,
    .freeHandle = FreeHandle,
    .readSetting = ReadSetting,
    .writeSetting = WriteSetting,
    .readSection = ReadSection,
    .writeSection = WriteSection,
    .bufferAppend = BufferAppend,
    .nameOffset = NameOffset,
    .reportError = ReportError,
    .setForeground = SetForeground,
    .appendText = AppendText,
};

// ---- The job ------------------------------------------------------------------------------------

/// What the listing gives: its lines for standard output, and the size of the wanted file.
struct Listing {
    QuennetGrowBuffer lines;
    int failed;
    uint32_t size;
};

/// The callback of message 26 holds the list lock, so it only collects.
static void TakeEntry(const char* name, uint32_t date, uint32_t time, uint32_t attributes,
                      uint32_t size, QuennetWord context) {
    struct Listing* listing = (struct Listing*)context;
    const int isDirectory = (attributes & QUENNET_ATTRIBUTE_DIRECTORY) != 0;
    char line[320];  // a line of a listing has at most 256 bytes
    snprintf(line, sizeof line, "%c %10u %s", isDirectory ? 'd' : '-', size, name);
    if (BufferAppend(&listing->lines, line, (uint32_t)strlen(line) + 1) != 0) {
        listing->failed = 1;
    }
    if (!isDirectory && strcmp(name, file) == 0) {
        listing->size = size;
    }
}

/// Lists the session's directory. True when that was done.
static int List(struct Listing* listing) {
    if (SEND(QUENNET_LIST_DIRECTORY, 0, holder, WORD_OF(TakeEntry), WORD_OF(listing)) != 0 ||
        listing->failed) {
        PrintLine(stderr, "small_host: no listing of ", directory);
        return 0;
    }
    const char* line = (const char*)listing->lines.base;
    const char* end = line + listing->lines.used;
    for (; line != end; line += strlen(line) + 1) {
        PrintLine(stdout, "", line);
    }
    return fflush(stdout) == 0;
}

/// A file that is there already is completed if it can be.
static void Confirm(QuennetTransferItem* item, QuennetWord resumeOffset) {
    QuennetTransferRecord* record = (QuennetTransferRecord*)item->record;
    record->status = resumeOffset != 0 ? QUENNET_GO_ON : QUENNET_LEAVE_OUT;
}

/// Downloads the file. True when that was done.
static int Download(const struct Listing* listing) {
    QuennetTransferRecord record = {.sourceHandle = holder, .status = QUENNET_GO_ON};
    QuennetTransferItem item = {.record = WORD_OF(&record), .sourceSize = listing->size};
    AppendText(item.source, file, sizeof item.source);
    AppendText(item.destination, target, sizeof item.destination);
    if (SEND(QUENNET_GET_FILE, WORD_OF(&item), holder, WORD_OF(Confirm)) != 0) {
        PrintLine(stderr, "small_host: ", ((const QuennetFtpHandle*)holder)->errorText);
        return 0;
    }
    if (record.status != QUENNET_GO_ON) {
        PrintLine(stderr, "small_host: exists already: ", target);
        return 0;
    }
    return 1;
}

static DWORD WINAPI RunJob(LPVOID nothing) {
    struct Listing listing = {.size = 0};
    if (List(&listing) && Download(&listing)) {
        status = 0;
    }
    free((void*)listing.lines.base);
    PostMessageA(mainWindow, jobIsDone, 0, 0);
    return 0;
}

// ---- The main thread ----------------------------------------------------------------------------

static void Disconnect(void) {
    SEND(QUENNET_DISCONNECT, WORD_OF(&holder));
}

static void GoToDirectory(void) {
    const QuennetFtpHandle* handle = (const QuennetFtpHandle*)holder;
    SEND(QUENNET_GO_TO_DIRECTORY, handle->session, WORD_OF("name for EndGoTo"), WORD_OF(directory),
         cookie, WORD_OF(BeginGoTo), WORD_OF(EndGoTo));
}

static void StartJob(void) {
    if (!isInDirectory) {
        PrintLine(stderr, "small_host: no such directory: ", directory);
        Disconnect();
        return;
    }
    HANDLE thread = CreateThread(NULL, 0, RunJob, NULL, 0, NULL);
    if (thread == NULL) {
        fputs("small_host: no thread\n", stderr);
        Disconnect();
        return;
    }
    CloseHandle(thread);  // the thread goes on
}

static void TakeNotification(WPARAM what, LPARAM lParam) {
    if (what == QUENNET_CONNECTED) {
        GoToDirectory();
    } else if (what == QUENNET_CONNECT_FAILED) {
        char* block = (char*)lParam;  // the host's now
        PrintLine(stderr, "small_host: cannot connect: ", block + 1);
        free(block);
        Disconnect();  // the handle of a failed connection is live, too
    }
}

static LRESULT CALLBACK MainProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case QUENNET_NOTIFICATION:
            TakeNotification(wParam, lParam);
            return 0;
        case directoryIsTried:
            StartJob();
            return 0;
        case jobIsDone:
            Disconnect();
            return 0;
        case handleIsGone:
            PostQuitMessage(0);
            return 0;
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

/// An unseen window: what the module posts arrives in it, and it stands for the console.
static HWND MakeMainWindow(void) {
    const HINSTANCE program = GetModuleHandleA(NULL);
    const WNDCLASSEXA windowClass = {.cbSize = sizeof windowClass,
                                     .lpfnWndProc = MainProcedure,
                                     .hInstance = program,
                                     .lpszClassName = "small host"};
    RegisterClassExA(&windowClass);
    return CreateWindowExA(0, "small host", "", 0, 0, 0, 0, 0, NULL, NULL, program, NULL);
}

/// Loads the module and hands it the tables. Its instance, null when that failed.
static HINSTANCE AttachModule(const char* path) {
    const HINSTANCE instance = LoadLibraryA(path);
    if (instance == NULL) {
        PrintLine(stderr, "small_host: cannot load ", path);
        return NULL;
    }
    module = (QuennetFunction)(void (*)(void))GetProcAddress(instance, "f");
    if (module == NULL ||
        SEND(QUENNET_SET_TABLES, WORD_OF(&coreServices), WORD_OF(&passwordKey),
             WORD_OF(&shellServices), 0, 0, WORD_OF(mainWindow)) != QUENNET_TABLES_STORED) {
        PrintLine(stderr, "small_host: not the module: ", path);
        return NULL;
    }
    return instance;
}

/// Runs the dialog, which closes by itself, and starts the login. False when it did not start.
static int Connect(HINSTANCE instance) {
    QuennetConnectParams params = {.section = WORD_OF(section),
                                   .instance = WORD_OF(instance),
                                   .watchdogInstance = WORD_OF(instance)};
    const QuennetWord console = WORD_OF(mainWindow);  // any window of this thread will do
    SEND(QUENNET_CONNECT, WORD_OF(mainWindow), WORD_OF(&holder), console, panelId,
         WORD_OF(&socketUses), cookie, WORD_OF(&params));
    return holder != 0;
}

/// What is sent to the server holds no line end.
static int Fits(const char* text, size_t longest) {
    return strlen(text) <= longest && strpbrk(text, "\r\n") == NULL;
}

static int TakeArguments(int count, char** words) {
    if (count != 7) {
        fputs("usage: FTP_PASSWORD=... small_host MODULE HOST[:PORT] USER DIRECTORY FILE TARGET\n",
              stderr);
        return 0;
    }
    serverName = words[2];
    user = words[3];
    directory = words[4];
    file = words[5];
    target = words[6];
    password = getenv("FTP_PASSWORD");
    if (!Fits(serverName, longestField) || !Fits(user, longestField) ||
        !Fits(directory, longestPath) || !Fits(file, longestPath) || !Fits(target, longestPath)) {
        fputs("small_host: an argument is too long, or holds a line end\n", stderr);
        return 0;
    }
    return 1;
}

int main(int count, char** words) {
    if (!TakeArguments(count, words)) {
        return 2;
    }
    InitializeCriticalSection(&listLock);
    mainWindow = MakeMainWindow();
    const HINSTANCE instance = AttachModule(words[1]);
    if (instance == NULL || !Connect(instance)) {
        return 1;
    }
    MSG message;
    while (GetMessageA(&message, NULL, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return status;
}
