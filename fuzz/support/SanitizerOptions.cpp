// What the sanitizers of a fuzzer do, also where it is run by hand to see a fault again. binutils'
// tool names the places in the code: every machine that builds has it.

extern "C" const char* __asan_default_options() {
  return "detect_stack_use_after_return=1:strict_string_checks=1:"
         "external_symbolizer_path=/usr/bin/addr2line";
}

extern "C" const char* __ubsan_default_options() { return "print_stacktrace=1"; }
