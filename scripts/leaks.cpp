// What the desktop's libraries keep to themselves until the end is not ours to free. Linked into
// every instrumented program, so that none needs an environment of its own.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\n"
           "leak:libQt6Gui\n"
           "leak:libQt6Widgets\n"
           "leak:libQt6XcbQpa\n"
           "leak:libglib\n";
}
// And it says nothing of those it has passed over.
extern "C" const char* __lsan_default_options();
extern "C" const char* __lsan_default_options() {
    return "print_suppressions=0";
}
