#pragma once
// Controls of the connection dialog, 14300, that more than one file works with.

#include "host/records.h"

namespace quennet {

constexpr int siteList = 14301;
constexpr int nameEdit = 14202;
constexpr int hostEdit = 14203;
constexpr int userEdit = 14302;
constexpr int passwordEdit = 15202;
constexpr int directoryEdit = 14204;
constexpr int anonymousBox = 14303;
constexpr int savePasswordBox = 14304;
constexpr int firewallBox = 14305;
constexpr int passiveBox = 14306;

/// The fields with the letters of their keys in the site book, in the order in which they are
/// loaded and saved.
struct SiteEdit {
    char letter;
    int control;
};
constexpr SiteEdit siteEdits[] = {
    {'M', nameEdit}, {'H', hostEdit}, {'U', userEdit}, {'W', passwordEdit}, {'D', directoryEdit},
};

struct OptionBox {
    int control;
    u32 option;
};
constexpr OptionBox optionBoxes[] = {
    {anonymousBox, SiteOptionAnonymous},
    {savePasswordBox, SiteOptionSavePassword},
    {firewallBox, SiteOptionFirewall},
    {passiveBox, SiteOptionPassive},
};

/// A text field gives at most this many bytes to the book, less one for the terminator.
constexpr int fieldSize = 259;

}  // namespace quennet
