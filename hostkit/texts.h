#pragma once
// The host's texts: messages to the user and the labels of dialogs, by number.

#include "hostkit/types.h"

namespace hostkit {

// The host's own dialogs.
enum : u16 {
    filterTitleText = 20000,
    filterMasksText,
    filterSizesText,
    filterLargestText,
    filterDatesText,
    filterLastDateText,
    filterHintText,
    filterFoldersText,
    filterMasksTooLongText,
    filterNoSizeText,
    filterLargestIsNoneText,
    filterSizesCrossText,
    filterNoDateText,
    filterDatesCrossText,
};

/// Null for a number that has no text.
const char* TextOfId(u32 id);

}  // namespace hostkit
