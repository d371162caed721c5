// Texts and dialogs.

#include <exception>
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
    try {
        return EditFilterDialog(owner, filter != nullptr ? *filter : services.DefaultFilter(),
                                services.FilterMutex());
    } catch (const std::exception&) {
        return 0;
    }
}
}

}  // namespace

void FillDialogServices(CoreServices& core, ShellServices& shell) {
    Put<CoreLoadTextFunction>(core, CoreService::loadText, LoadText);
    Put<CoreApplyDialogTextsFunction>(core, CoreService::applyDialogTexts, ApplyDialogTexts);
    Put<CoreInitDialogFunction>(core, CoreService::initDialog, InitDialog);
    Put<ShellEditFilterFunction>(shell, ShellService::editFilter, EditFilter);
}

}  // namespace hostkit
