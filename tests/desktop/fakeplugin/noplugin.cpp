// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// A shared library that no plug-in loader can do anything with.
extern "C" __attribute__((visibility("default"))) int answerToEverything() { return 42; }
