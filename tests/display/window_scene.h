#pragma once

#include <string>

/// Shows a window that is worked with its menu and tool bar, until its Quit. Its save dialog begins
/// with the path.
void RunWindow(const std::string& path);
