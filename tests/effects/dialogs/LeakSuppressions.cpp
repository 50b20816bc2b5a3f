// Under LeakSanitizer: fontconfig keeps the patterns of the fonts Qt matched until the
// process ends. The leak is the library's, made once; the dialogs' own memory is checked.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }
