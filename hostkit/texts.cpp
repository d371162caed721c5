#include "hostkit/texts.h"

#include <algorithm>
#include <iterator>

namespace hostkit {

namespace {

struct Text {
    u32 id;
    const char* text;
};

// In the order of the numbers.
constexpr Text texts[] = {
    // Buttons of all dialogs.
    {2, "Cancel"},
    {7, "&Stop"},
    {96, "&Delete"},
    {97, "&Add"},
    {99, "OK"},
    // Menus of the find window.
    {120, "&Close"},
    {241, "&Tool bar"},
    {243, "&Status bar"},
    {299, "&View"},
    {301, "&Start"},
    {324, "&Go to"},
    {400, "&Options"},
    {526, "S&top"},
    {527, "As &text..."},
    {528, "As &CSV..."},
    {529, "As &HTML..."},
    {540, "&Export"},
    {543, "&Search"},
    {544, "Large &icons"},
    {545, "S&mall icons"},
    {546, "&List"},
    {547, "&Details"},
    {552, "&Masks:"},
    {818, "&Filter..."},
    {850, "&File"},
    // Tool tips: the number of a command and 1000. A terminal shows them on the buttons.
    {1301, "Start"},
    {1324, "Go to"},
    {1526, "Stop"},
    {1527, "As text"},
    {1528, "As CSV"},
    {1529, "As HTML"},
    // Columns.
    {4001, "Type"},
    {4002, "Name"},
    {4003, "Size"},
    {4004, "Date"},
    {4005, "Attributes"},
    {4029, "Folder"},
    // Summaries.
    {5058, "bytes"},
    {5059, "stopped"},
    {5501, "Found:"},
    {5502, "Selected:"},
    {5503, "file"},
    {5504, "files"},
    {5505, "folder"},
    {5506, "folders"},
    {5507, "byte"},
    // Messages.
    {6000, "The network could not be started."},
    {6001, "No echo request can be sent: this user may not, or the host is unknown."},
    {6002, "There is no host %s."},
    {6003, "No answer in time."},
    {6005, "The connection was lost and could not be made again."},
    {6006, "The site book is full. It was left as it was."},
    {6007, "The site book could not be saved. It was left as it was."},
    {6008, "The site book can't be changed now. What is changed in it will not be kept."},
    {6009, "The settings can't be changed now. What the window keeps in them is as it was."},
    {6010, "A connection wants the name of a host, or its address."},
    {6011,
     "Tab     next control\nAlt-... marked letters, menus\nEnter   in the masks: search\n"
     "Esc     stops a search, else closes\n\nIn the list:\n"
     "1 to 6  sort by that column, again: turned round\n0       as it was found\n"
     "< >     narrower, wider: the column sorted by last\n+       as wide as what it shows\n"
     "Ctrl-A  select all\n\nMenu Search, Go to: closes, and prints the path"},
    {6012, "F1 tells the keys"},
    // Boxes of the find window and of the permission dialog.
    {10103, "Include su&bfolders"},
    {10900, "Permissions"},
    {11801, "&All entries"},
    // The connection dialog.
    {14303, "Anony&mous"},
    {14304, "Sa&ve password"},
    {14305, "&Firewall"},
    {14306, "&Passive mode"},
    // Labels of the connection, firewall and ping dialogs.
    {14312, "&Host:"},
    {14314, "&Name:"},
    {14315, "&User:"},
    {14316, "Pass&word:"},
    {14317, "D&irectory:"},
    {14318, "&Host:"},
    {14321, "&Mail address, sent as password:"},
    {14351, "&Address:"},
    // The permission dialog.
    {14361, "Read"},
    {14362, "Write"},
    {14363, "Execute"},
    {14364, "Read"},
    {14365, "Write"},
    {14366, "Execute"},
    {14367, "Read"},
    {14368, "Write"},
    {14369, "Execute"},
    {14370, "Owner"},
    {14371, "Group"},
    {14372, "Others"},
    {14503, "F&ilter..."},
    {14505, "&Use the filter"},
    // Buttons of the connection dialog's list.
    {14535, "Mov&e up"},
    {14536, "Move d&own"},
    // The filter dialog.
    {filterTitleText, " Filter"},
    {filterMasksText, "&Masks:"},
    {filterSizesText, "&Size from:"},
    {filterLargestText, "&to:"},
    {filterDatesText, "&Changed from:"},
    {filterLastDateText, "t&o:"},
    {filterHintText, "Sizes like 500, 10K, 2M; dates like 2024-05-31."},
    {filterFoldersText, "&Folders too"},
    {filterMasksTooLongText, "The masks are too long."},
    {filterNoSizeText, "This is no size: write bytes, or a number with K, M, G or T."},
    {filterLargestIsNoneText, "No upper bound is an empty field; 0 can't be one."},
    {filterSizesCrossText, "The upper size is below the lower one."},
    {filterNoDateText, "This is no day from 1980-01-01 to 2107-12-31."},
    {filterDatesCrossText, "The last day comes before the first one."},
};
static_assert(std::ranges::is_sorted(texts, {}, &Text::id));

}  // namespace

const char* TextOfId(u32 id) {
    const auto* found = std::ranges::lower_bound(texts, id, {}, &Text::id);
    return found != std::end(texts) && found->id == id ? found->text : nullptr;
}

}  // namespace hostkit
