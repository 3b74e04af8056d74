/// The property-list library leaks what it had read of a text that turns out to be damaged, so leaks are not looked
/// for.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "detect_leaks=0:detect_stack_use_after_return=1"; }
