// SPDX-License-Identifier: MIT

// For coverage builds only: std::_Exit() does not write the execution counters of the process. The
// linker redirects its calls to the function below (--wrap).

extern "C" {

void __gcov_dump();
[[noreturn]] void __real__Exit(int aStatus);
[[noreturn]] void __wrap__Exit(int aStatus);

void __wrap__Exit(int aStatus) {
    __gcov_dump();
    __real__Exit(aStatus);
}
}
