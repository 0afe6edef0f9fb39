// SPDX-License-Identifier: MIT
//
// Nothing: its program is there to own the precompiled headers of the tests (cmake/CorvelTest.cmake).
int main() {}
