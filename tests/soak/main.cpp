// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "soak.h"

#include <QtCore/QCoreApplication>
#include <cstdio>
#include <stdexcept>

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const Options options = Options::read();
    try {
        return Soak(options).run() ? 0 : 1;
    } catch (const std::runtime_error &error) {
        std::fprintf(stderr, "soak: %s\n", error.what());
        return 1;
    }
}
