#pragma once
// The part of the platform's interface that the module and its hosts use, for POSIX systems.
// Names, values and behaviour are those that the platform documents.

#include "windef.h"

#include "winbase.h"
#include "wingdi.h"
#include "winmenu.h"
#include "winuser.h"
