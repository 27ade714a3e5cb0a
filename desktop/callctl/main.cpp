// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commandline.h"
#include "commands.h"
#include "failure.h"
#include "output.h"
#include "programs/log.h"
#include "programs/printabletext.h"

#include <QtCore/QCoreApplication>
#include <clocale>
#include <cstdio>

static int run(const QStringList &arguments)
{
    const CommandLine line = CommandLine::read(arguments);
    if (line.help)
        Output::print(CommandLine::helpText().toUtf8());
    else if (line.version)
        Output::print("callctl " RINGLET_VERSION "\n");
    else
        Commands::run(line);
    return int(ExitCode::Success);
}

int main(int argc, char *argv[])
{
    Log::begin(QStringLiteral("callctl"));
    QCoreApplication application(argc, argv);
    // In and out it is UTF-8; how wide characters are must not hang on the user's locale.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    try {
        QStringList arguments;
        for (int i = 1; i < argc; ++i)
            arguments.append(QString::fromUtf8(argv[i]));
        return run(arguments);
    } catch (const Failure &failure) {
        Log::complain(PrintableText::printable(failure.reason()));
        return int(failure.code());
    }
}
