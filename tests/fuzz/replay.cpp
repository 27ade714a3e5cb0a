// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Plays inputs that were kept: each a file named after its target, TARGET-ANYTHING, or in a folder of that name.
// --trace shows every message; --leaks looks for lost memory after each input, where the sanitizer is built in.

#include "finding.h"
#include "target.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <cstdio>

#ifdef HAS_LEAK_CHECK
#include <sanitizer/lsan_interface.h>
#endif

namespace {

QStringList inputsIn(const QString &path)
{
    const QFileInfo info(path);
    if (!info.isDir())
        return {path};
    QStringList inputs;
    const QStringList names = QDir(path).entryList(QDir::Files, QDir::Name);
    for (const QString &name : names)
        inputs.append(path + '/' + name);
    return inputs;
}

/** By the folder or by the start of the file's name. */
Player playerOf(const QString &path)
{
    const QFileInfo info(path);
    const Player byFolder = playerNamed(info.absoluteDir().dirName().toStdString());
    return byFolder ? byFolder : playerNamed(info.fileName().section('-', 0, 0).toStdString());
}

bool hasLeaked()
{
#ifdef HAS_LEAK_CHECK
    return __lsan_do_recoverable_leak_check() != 0;
#else
    return false;
#endif
}

bool replay(const QString &path)
{
    const Player play = playerOf(path);
    if (!play) {
        std::fprintf(stderr,
            "fuzz-replay: %s is in no folder 'calls' or 'values', nor named 'calls-...' or 'values-...'\n",
            qPrintable(path));
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "fuzz-replay: cannot read %s: %s\n", qPrintable(path), qPrintable(file.errorString()));
        return false;
    }
    const QByteArray input = file.readAll();
    // Before it is played: what ends the process is the last one named.
    std::printf("%s\n", qPrintable(path));
    std::fflush(stdout);
    play(reinterpret_cast<const std::uint8_t *>(input.constData()), std::size_t(input.size()));
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QStringList inputs;
    QStringList paths = application.arguments().mid(1);
    if (paths.removeAll(QStringLiteral("--trace")) > 0)
        traceMessages();
    const bool checksLeaks = paths.removeAll(QStringLiteral("--leaks")) > 0;
    for (const QString &path : paths)
        inputs += inputsIn(path);
    if (inputs.isEmpty()) {
        std::fprintf(stderr, "Usage: fuzz-replay [--trace] [--leaks] FILE-OR-FOLDER...\nNo input there.\n");
        return 2;
    }
    for (const QString &input : inputs) {
        if (!replay(input))
            return 1;
        if (checksLeaks && hasLeaked())
            reportFinding("memory is lost");
    }
    std::printf("%d inputs, no finding\n", int(inputs.size()));
    return 0;
}
