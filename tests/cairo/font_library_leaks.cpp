// The font library keeps its patterns for as long as the program runs, and points to their parts by
// distances, which the leak checker cannot follow. Blocks of everything else are still looked for.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig.so\n";
}
