#pragma once
// Gives the terminal back when the program ends by a signal, and passes on the signals that concern
// the screen. What runs in a handler is safe there.

#include <termios.h>

#include <string>

namespace quennet::terminal {

/// What signals tell, as bytes in a pipe.
enum class Notice : char { wake = 'w', resized = 'r', stop = 's', hungUp = 'h' };

/// Sets handlers for the signals that end a program (where there are none), and for SIGWINCH,
/// SIGTSTP and SIGHUP, which write a Notice to the descriptor. SIGHUP still ends the program when
/// neither restoring is armed nor the terminal has gone before. Once in a process.
void InstallSignalHandlers(int notices);

/// From now on a signal that ends the program puts these settings back and writes the text.
void ArmRestoring(int terminal, const termios& settings, const std::string& text);
void DisarmRestoring();

/// The end of the terminal was seen before its signal came. To be called while armed.
void NoteTerminalGone();

}  // namespace quennet::terminal
