// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "log.h"

#include "printabletext.h"

#include <QtCore/QMutex>
#include <cstdio>
#include <cstdlib>

namespace {

/** What has been written last, and how often it has come since. */
struct Repetition
{
    QMutex mutex;
    QString line;
    int count = 0;
    int told = 0;
};

} // namespace

static Repetition &last()
{
    // For ever: things are told while the process ends.
    static auto *repetition = new Repetition;
    return *repetition;
}

static QString &programName()
{
    static auto *name = new QString;
    return *name;
}

static void write(const QString &line)
{
    std::fprintf(stderr, "%s\n", line.toUtf8().constData());
    std::fflush(stderr);
}

static void tellCount(Repetition &repetition)
{
    if (repetition.told == repetition.count)
        return;
    repetition.told = repetition.count;
    write(QStringLiteral("%1: the line above came %2 more times").arg(programName()).arg(repetition.count));
}

static bool isPowerOfTen(int number)
{
    while (number % 10 == 0)
        number /= 10;
    return number == 1;
}

static void tell(const QString &line)
{
    Repetition &repetition = last();
    const QMutexLocker locker(&repetition.mutex);
    if (line != repetition.line) {
        tellCount(repetition);
        repetition.line = line;
        repetition.count = repetition.told = 0;
        write(line);
    } else if (++repetition.count >= 10 && isPowerOfTen(repetition.count)) {
        // Told now and then while it lasts, for it may never end.
        tellCount(repetition);
    }
}

static void tellAtTheEnd()
{
    // The process may end in the middle of a line.
    if (!last().mutex.tryLock())
        return;
    tellCount(last());
    last().mutex.unlock();
}

static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    tell(Log::line(qFormatLogMessage(type, context, message)));
}

QString Log::line(const QString &text)
{
    // What is cut off anyway need not be looked at.
    const QString cut = text.size() > 2 * longestLine ? text.left(2 * longestLine) + QChar(0x2026) : text;
    QString escaped = PrintableText::escaped(cut);
    escaped.replace(QLatin1Char('\n'), QLatin1String("\\u000a"));
    return PrintableText::elided(escaped, longestLine);
}

void Log::begin(const QString &program)
{
    programName() = program;
    qInstallMessageHandler(handle);
    std::atexit(tellAtTheEnd);
}

void Log::complain(const QString &text) { tell(line(QStringLiteral("%1: %2").arg(programName(), text))); }
