#include "listing/walker.h"

#include <algorithm>
#include <cstring>

#include "fuzz/listing_input.h"

using namespace quennet;

namespace {

struct Seen {
    std::size_t entries = 0;
};

extern "C" void CountEntry(const char* name, u32 date, u32 time, u32 attributes, u32 size,
                           HostWord context) {
    Seen* seen = PointerFromWord<Seen>(context);
    Expect(std::strlen(name) <= 256);
    Expect(date <= 0xFFFF && time <= 0xFFFF && attributes <= 0xFFFF);
    Expect(attributes != 0x18 || (seen->entries == 0 && std::strcmp(name, "..") == 0 && size == 0));
    ++seen->entries;
}

bool MayFollow(ServerFamily before, ServerFamily after) {
    const bool wasMvs = before == ServerFamily::mvsDatasets || before == ServerFamily::mvsMembers;
    const bool mayBe = after == ServerFamily::unknown || after == ServerFamily::mvsDatasets ||
                       after == ServerFamily::mvsMembers || after == ServerFamily::unixLike;
    return before == after || (wasMvs && mayBe);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const ListingInput input(data, size);
    alignas(8) static char memory[sessionOffset + sizeof(Session)];
    std::memset(memory, 0, sizeof(memory));
    Session* session = reinterpret_cast<Session*>(memory + sessionOffset);
    session->serverType.Store(static_cast<u32>(input.family));
    Seen seen;
    ParseListing("/pub", session, input.text.c_str(), CountEntry, WordFromPointer(&seen));
    // A line has at least one byte and its end; the parent's entry comes first.
    Expect(seen.entries >= 1 && seen.entries <= input.text.size() / 2 + 2);
    Expect(MayFollow(input.family, static_cast<ServerFamily>(session->serverType.Load())));
    return 0;
}
