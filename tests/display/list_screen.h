#pragma once
// A top window with search controls, a list view of many rows and a status bar.

#include <string>

/// Runs it until it is closed; tells what became of it.
std::string RunListScreen(int rows);
