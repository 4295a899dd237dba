# Sourced by scripts/sanitize and scripts/fuzz: the first finding is fatal,
# leaks are checked, findings come with their stack.
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:strict_string_checks=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export LSAN_OPTIONS=suppressions=$here/scripts/lib/lsan.supp:print_suppressions=0
