// A sanitizer's error ends the program with a status that has no other meaning, so that a script
// that expects 1 or 2 notices it.

#define OPTIONS extern "C" __attribute__((visibility("default"), used)) const char*

OPTIONS __asan_default_options() { return "exitcode=99"; }
OPTIONS __lsan_default_options() { return "exitcode=99"; }
OPTIONS __tsan_default_options() { return "exitcode=99"; }
OPTIONS __ubsan_default_options() { return "exitcode=99"; }
