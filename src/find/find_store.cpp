#include "find/find_store.h"

#include <cstring>

#include "host/services.h"

namespace quennet {

namespace {

/// Of so many directories in a row the first has a mark: what a lookup walks at most.
constexpr u32 directoryMarkStep = 32;

constexpr u64 largestOffset = 0xFFFFFFFF;

/// Whether an offset at the buffer's end, and behind the addition, still is a number of 32 bits.
bool HasRoomFor(const GrowBuffer& buffer, u32 size) {
    return u64{buffer.used} + size <= largestOffset;
}

void Empty(GrowBuffer* buffer) {
    buffer->count = 0;
    buffer->used = 0;
}

void Release(GrowBuffer* buffer) {
    CoreFreeWord(&buffer->base);
    *buffer = {};
}

void FreeRecordTable(FindWindow* find) {
    void* table = find->recordTable;
    CoreFree(&table);
    find->recordTable = nullptr;
}

u32 WordAt(const GrowBuffer& buffer, u32 position) {
    return PointerFromWord<const u32>(buffer.base)[position];
}

FindRecord* RecordAt(const FindWindow* find, u32 offset) {
    return reinterpret_cast<FindRecord*>(PointerFromWord<char>(find->records.base) + offset);
}

const FindDirRecord* DirectoryAt(const FindWindow* find, u32 offset) {
    return reinterpret_cast<const FindDirRecord*>(
        PointerFromWord<const char>(find->directories.base) + offset);
}

/// A mark that finds no memory is made good for by longer walks.
void MarkDirectory(FindWindow* find, u32 offset) {
    const u32 marks = static_cast<u32>(find->directoryMarks.count);
    if (u32(find->directories.count) == marks * directoryMarkStep + 1) {
        ShellBufferAppend(&find->directoryMarks, &offset, sizeof offset);
    }
}

}  // namespace

void ResetStore(FindWindow* find) {
    const ListLock lock;
    Empty(&find->index);
    Empty(&find->records);
    Empty(&find->directories);
    Empty(&find->directoryMarks);
    find->indexed = 0;
    find->firstStateRow = find->endStateRow = 0;
    find->hits.Store(0);
    FreeRecordTable(find);
}

void FreeStore(FindWindow* find) {
    const ListLock lock;
    FreeRecordTable(find);
    Release(&find->index);
    Release(&find->records);
    Release(&find->directories);
    Release(&find->directoryMarks);
    find->hits.Store(0);
}

u32 AppendDirectory(FindWindow* find, const char* path) {
    const std::size_t pathLength = std::strlen(path);
    if (pathLength >= findPathSize) {
        return 0;
    }
    char scratch[findScratchSize];
    const u16 length = static_cast<u16>(sizeof(FindDirRecord) + pathLength);
    std::memcpy(scratch, &length, sizeof length);
    std::memcpy(scratch + offsetof(FindDirRecord, path), path, pathLength + 1);

    const ListLock lock;
    const u32 offset = static_cast<u32>(find->directories.used);
    if (!HasRoomFor(find->directories, length) ||
        !ShellBufferAppend(&find->directories, scratch, length)) {
        return 0;
    }
    MarkDirectory(find, offset);
    return static_cast<u32>(find->directories.count);
}

bool AppendHit(FindWindow* find, const FindRecord* record) {
    const ListLock lock;
    return HasRoomFor(find->records, record->length) &&
           ShellBufferAppend(&find->records, record, record->length);
}

void IndexHits(FindWindow* find) {
    const ListLock lock;
    while (find->indexed < find->records.used) {
        if (!ShellBufferAppend(&find->index, &find->indexed, sizeof find->indexed)) {
            break;
        }
        find->indexed += RecordAt(find, find->indexed)->length;
    }
    find->hits.Store(RowCount(find));
}

u32 RowCount(const FindWindow* find) {
    return find->index.base != 0 ? static_cast<u32>(find->index.count) : 0;
}

FindRecord* HitAtRow(const FindWindow* find, u32 row) {
    return row < RowCount(find) ? RecordAt(find, WordAt(find->index, row)) : nullptr;
}

const FindDirRecord* DirectoryByNumber(const FindWindow* find, u32 number) {
    if (number == 0 || number > find->directories.count) {
        return nullptr;
    }
    const u32 marks = static_cast<u32>(find->directoryMarks.count);
    u32 mark = (number - 1) / directoryMarkStep;
    if (mark >= marks) {
        mark = marks > 0 ? marks - 1 : 0;
    }
    u32 offset = marks > 0 ? WordAt(find->directoryMarks, mark) : 0;
    for (u32 at = mark * directoryMarkStep + 1; at < number; ++at) {
        offset += DirectoryAt(find, offset)->length;
    }
    return DirectoryAt(find, offset);
}

bool BuildRecordTable(FindWindow* find) {
    const ListLock lock;
    if (find->recordTable != nullptr) {
        return true;
    }
    const HostWord count = find->records.count;
    auto** table = static_cast<FindRecord**>(CoreAlloc((count + 1) * sizeof(FindRecord*)));
    if (table == nullptr) {
        return false;
    }
    FindRecord* record = RecordAt(find, 0);
    for (HostWord i = 0; i < count; ++i) {
        table[i] = record;
        record = NextRecord(record);
    }
    find->recordTable = table;
    return true;
}

FindRecord* NextRecord(FindRecord* record) {
    return reinterpret_cast<FindRecord*>(reinterpret_cast<char*>(record) + record->length);
}

}  // namespace quennet
