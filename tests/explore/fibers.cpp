#include "tests/explore/fibers.h"

#include <cstdint>

extern "C" void explore_switch(void** save, void* load);

// The six registers that the called function must preserve, and the stack.
asm(R"(
.text
.globl explore_switch
.type explore_switch, @function
explore_switch:
    pushq %rbp
    pushq %rbx
    pushq %r12
    pushq %r13
    pushq %r14
    pushq %r15
    movq %rsp, (%rdi)
    movq %rsi, %rsp
    popq %r15
    popq %r14
    popq %r13
    popq %r12
    popq %rbx
    popq %rbp
    ret
.size explore_switch, .-explore_switch
)");

namespace explore {

void Context::prepare(char* stack, std::size_t size, void (*entry)()) {
    constexpr int saved_registers = 6;
    auto* top = reinterpret_cast<std::uintptr_t*>(stack + size);
    // What a call would leave: a return address, 8 bytes off a multiple of 16.
    *--top = 0;
    *--top = reinterpret_cast<std::uintptr_t>(entry);
    for (int i = 0; i < saved_registers; ++i) {
        *--top = 0;
    }
    stack_pointer_ = top;
}

void Context::resume(Context& from) {
    explore_switch(&from.stack_pointer_, stack_pointer_);
}

}  // namespace explore
