// SPDX-License-Identifier: MIT

// Lower bound for a program that calls a plugin: read, load, call, print. It does not parse JSON.
#include "bare_program.h"

int main(int aCount, char** aArguments) {
    if (aCount != 2) fail("usage: floor PLUGIN");
    return std::puts(askPlugin(aArguments[1], readInput())) == EOF ? 2 : 0;
}
