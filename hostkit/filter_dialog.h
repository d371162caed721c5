#pragma once
// The host's dialog for a filter record.

#include <windows.h>

#include <shared_mutex>

#include "hostkit/masks.h"

namespace hostkit {

/// Has a person edit a filter. False when it is cancelled, and the record is as it was. What can't
/// be is told in the dialog, which then stays. The record is changed under `mutex`, since a search
/// may be using it.
bool EditFilterDialog(HWND owner, FilterRecord& filter, std::shared_mutex& mutex);

}  // namespace hostkit
