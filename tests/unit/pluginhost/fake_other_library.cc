// SPDX-License-Identifier: Apache-2.0
// A shared library that is no plugin library.
extern "C" __attribute__((visibility("default"))) int somethingElse() { return 1; }
