// For builds with LeakSanitizer, compiled into each program that shows windows in a terminal:
// ncurses keeps what it once read of the terminal's description until the process ends
// (curs_memleaks(3X)).

extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();

const char* __lsan_default_suppressions() {
    return "leak:libtinfo\nleak:libncurses\n";
}
