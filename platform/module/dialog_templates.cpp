// Registers the module's dialogs for the library or program that this file is linked into, as long
// as that is loaded. Where the system reads them from resources this file is not needed.

#include "quennet_platform.h"

#include <dlfcn.h>

#include <iterator>

namespace {

// clang-format off

// First the controls of each dialog, then the dialogs.
#define QUENNET_DIALOG(id, width, height, title) constexpr QuennetControlTemplate controls##id[] = {
#define QUENNET_CONTROL(text, class, id, style, x, y, width, height) \
    {class, id, style, x, y, width, height, text},
#define QUENNET_DIALOG_END };
#include "resources/dialogs.inc"
#undef QUENNET_DIALOG
#undef QUENNET_CONTROL
#undef QUENNET_DIALOG_END

constexpr QuennetDialogTemplate dialogs[] = {
#define QUENNET_DIALOG(id, width, height, title) \
    {id, title, QUENNET_DIALOG_STYLE, width, height, controls##id, std::size(controls##id)},
#define QUENNET_CONTROL(text, class, id, style, x, y, width, height)
#define QUENNET_DIALOG_END
#include "resources/dialogs.inc"
};

// clang-format on

/// The load address of what this file is linked into.
HINSTANCE OwnInstance() {
    Dl_info info = {};
    return dladdr(dialogs, &info) != 0 ? static_cast<HINSTANCE>(info.dli_fbase) : nullptr;
}

struct Registration {
    Registration() {
        QuennetRegisterDialogs(OwnInstance(), dialogs, static_cast<UINT>(std::size(dialogs)));
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;
    ~Registration() { QuennetUnregisterDialogs(dialogs); }
};

const Registration registration;

}  // namespace
