// Texts and dialogs.

#include <string>

#include "hostkit/filter_dialog.h"
#include "hostkit/host.h"
#include "hostkit/memory.h"
#include "hostkit/services.h"
#include "hostkit/texts.h"

namespace hostkit {

namespace {

using namespace quennet;

extern "C" {

/// A number without a text gives the empty text.
static void LoadText(u32 textId, char* buffer, u32 size) {
    if (size > 0) {
        const char* text = TextOfId(textId);
        buffer[0] = '\0';
        AppendBounded(buffer, text != nullptr ? text : "", size);
    }
}

static void ApplyDialogTexts(HWND window, const u16* table) {
    if (const char* caption = TextOfId(table[0]); table[0] != 0 && caption != nullptr) {
        SetWindowTextA(window, caption);
    }
    for (const u16* id = table + 1; *id != 0; ++id) {
        if (const char* text = TextOfId(*id)) {
            SetDlgItemTextA(window, *id, text);
        }
    }
}

static void InitDialog(HWND window) {
    const auto& initDialog = Host::Current()->Options().initDialog;
    if (!DialogHook::Run(window) && initDialog) {
        initDialog(window);
    }
}

static i32 EditFilter(HWND owner, void* record) {
    Services& services = Host::Current()->GetServices();
    auto* filter = static_cast<FilterRecord*>(record);
    return EditFilterDialog(owner, filter != nullptr ? *filter : services.DefaultFilter(),
                            services.FilterMutex());
}
}

}  // namespace

void FillDialogServices(CoreServices& core, ShellServices& shell) {
    Put<CoreLoadTextFunction, LoadText>(core, CoreService::loadText);
    Put<CoreApplyDialogTextsFunction, ApplyDialogTexts>(core, CoreService::applyDialogTexts);
    Put<CoreInitDialogFunction, InitDialog>(core, CoreService::initDialog);
    Put<ShellEditFilterFunction, EditFilter>(shell, ShellService::editFilter);
}

}  // namespace hostkit
