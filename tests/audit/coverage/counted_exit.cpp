// The exit deadline leaves by _exit, at which nothing is written.

extern "C" {

int __llvm_profile_write_file(void);
[[noreturn]] void __real__exit(int status);
[[noreturn]] void __wrap__exit(int status);

void __wrap__exit(int status) {
    __llvm_profile_write_file();
    __real__exit(status);
}
}
