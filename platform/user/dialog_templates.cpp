// The dialog templates that libraries have registered.

#include "user/dialog.h"

#include <algorithm>
#include <new>
#include <span>

namespace quennet::user {

namespace {

struct TemplateTable {
    HINSTANCE instance;
    std::span<const QuennetDialogTemplate> templates;
};

struct TemplateTables {
    std::mutex mutex;
    std::vector<TemplateTable> tables;
};

/// Never destroyed: libraries are unloaded after this one's objects are gone.
TemplateTables& Registered() {
    static TemplateTables& registered = *new TemplateTables;
    return registered;
}

}  // namespace

bool FindDialogTemplate(HINSTANCE instance, LPCSTR name, QuennetDialogTemplate* found) {
    if (!IS_INTRESOURCE(name)) {
        return false;
    }
    const auto id = reinterpret_cast<ULONG_PTR>(name);
    TemplateTables& registered = Registered();
    const std::lock_guard lock(registered.mutex);
    for (auto table = registered.tables.rbegin(); table != registered.tables.rend(); ++table) {
        const auto match = std::ranges::find(table->templates, id, &QuennetDialogTemplate::id);
        if (table->instance == instance && match != table->templates.end()) {
            *found = *match;
            return true;
        }
    }
    return false;
}

}  // namespace quennet::user

using namespace quennet::user;

extern "C" {

void QuennetRegisterDialogs(HINSTANCE instance, const QuennetDialogTemplate* templates,
                            UINT count) try {
    TemplateTables& registered = Registered();
    const std::lock_guard lock(registered.mutex);
    registered.tables.push_back({instance, {templates, count}});
} catch (const std::bad_alloc&) {
    // The library that is being loaded has no dialogs then: none of them opens.
}

void QuennetUnregisterDialogs(const QuennetDialogTemplate* templates) {
    TemplateTables& registered = Registered();
    const std::lock_guard lock(registered.mutex);
    std::erase_if(registered.tables,
                  [&](const TemplateTable& table) { return table.templates.data() == templates; });
}
}
