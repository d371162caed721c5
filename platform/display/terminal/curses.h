#pragma once
// ncurses, without the names that it takes from everybody.

#define NCURSES_NOMACROS
#include <ncurses.h>
#include <term.h>

#undef columns
#undef lines
#undef columns
#undef newline
#undef tab
#undef bell
