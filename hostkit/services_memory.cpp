// Memory, bounded text and growing buffers.

#include <cerrno>
#include <cstdlib>
#include <utility>

#include "hostkit/files.h"
#include "hostkit/memory.h"
#include "hostkit/received_listing.h"
#include "hostkit/request_watch.h"
#include "hostkit/services.h"

namespace hostkit {

namespace {

using namespace quennet;

extern "C" {

static void* Alloc(HostWord size) {
    void* block = std::calloc(1, size);
    RequestWatch::Allocated(block);
    return block;
}

static void Free(void** pointer) {
    if (pointer != nullptr) {
        RequestWatch::Released(*pointer);
        std::free(std::exchange(*pointer, nullptr));
    }
}

static void AppendText(char* target, const char* text, u32 size) {
    AppendBounded(target, text, size);
}

static i32 BufferAppend(GrowBuffer* record, const void* data, u32 size) {
    if (!ReceivedListing::MayAppend(*record, size)) {
        return 1;
    }
    if (!AppendToBuffer(*record, data, size)) {
        NoteFileFailure("", ENOMEM);
        return 1;
    }
    ReceivedListing::Appended(*record, size);
    return 0;
}
}

}  // namespace

void FillMemoryServices(CoreServices& core, ShellServices& shell) {
    Put<CoreAllocFunction, Alloc>(core, CoreService::alloc);
    Put<CoreFreeFunction, Free>(core, CoreService::free);
    Put<CoreCopyTextFunction, AppendText>(core, CoreService::copyText);
    Put<ShellAppendTextFunction, AppendText>(shell, ShellService::appendText);
    Put<ShellBufferAppendFunction, BufferAppend, 1>(shell, ShellService::bufferAppend);
}

}  // namespace hostkit
