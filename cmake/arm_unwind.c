/* ARM unwind tables name these routines so that a linker brings them in. The unwinder that walks the tables, the
 * process's own, calls its own and never these; defined here and hidden, they spare a module the libgcc_s dependency.
 */
#define HIDDEN __attribute__((visibility("hidden"), used))

HIDDEN void __aeabi_unwind_cpp_pr0(void);
HIDDEN void __aeabi_unwind_cpp_pr1(void);
HIDDEN void __aeabi_unwind_cpp_pr2(void);

void __aeabi_unwind_cpp_pr0(void) {}
void __aeabi_unwind_cpp_pr1(void) {}
void __aeabi_unwind_cpp_pr2(void) {}
