// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The entry points that libFuzzer calls; TARGET names what it looks for inputs of.

#include "target.h"

#include <QtCore/QCoreApplication>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static auto *application = new QCoreApplication(*argc, *argv);
    return application ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const Player play = playerNamed(TARGET);
    play(data, size);
    return 0;
}
