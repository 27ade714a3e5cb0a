// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Plays inputs against programs as they are shipped, on a real bus.

#include "box.h"
#include "finding.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <cstdio>
#include <random>

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        reportFinding("cannot read " + path.toStdString());
    return file.readAll();
}

QList<QByteArray> inputsIn(const QStringList &paths)
{
    QList<QByteArray> inputs;
    for (const QString &path : paths) {
        if (!QFileInfo(path).isDir())
            inputs.append(contents(path));
        const QStringList names = QDir(path).entryList(QDir::Files, QDir::Name);
        for (const QString &name : QFileInfo(path).isDir() ? names : QStringList())
            inputs.append(contents(path + '/' + name));
    }
    return inputs;
}

/** One of those that are played in another way, and need not be kept: any bytes do. */
QByteArray loud(std::mt19937 &random)
{
    QByteArray input("\0LOUD", 5);
    for (unsigned size = 4 + random() % 60; size > 0; --size)
        input.append(char(random()));
    return input;
}

/** One that is kept with some of its bytes changed, or one made up of nothing but chance. */
QByteArray varied(const QList<QByteArray> &inputs, std::mt19937 &random)
{
    if (random() % 16 == 0)
        return loud(random);
    QByteArray input = inputs.isEmpty() || random() % 8 == 0 ? QByteArray(int(random() % 800), 0)
                                                             : inputs.at(int(random() % unsigned(inputs.size())));
    const unsigned changes = input.count('\0') == input.size() ? unsigned(input.size()) : 1 + random() % 8;
    for (unsigned i = 0; i < changes && !input.isEmpty(); ++i)
        input[int(random() % unsigned(input.size()))] = char(random());
    return input;
}

void keep(const QString &path, const QByteArray &input)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(input) != input.size())
        reportFinding("cannot write " + path.toStdString());
}

/**
 * What the programs' memory may grow by from its hundredth input to its last. A sanitizer's allocator keeps what was
 * freed: there, the search for lost memory at their end has to do.
 */
#ifdef IS_SANITIZED
constexpr int memoryBoundKiB = 1024 * 1024;
#else
constexpr int memoryBoundKiB = 16 * 1024;
#endif

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addPositionalArgument("inputs", "Files and folders; without --seconds each is played once.");
    parser.addOptions({{"target", "host, or applications.", "NAME", "host"},
        {"seconds", "Plays variations for so long.", "N", "0"}, {"seed", "Of the variations.", "N", "1"},
        {"current", "Where the input that is being played is kept.", "FILE", "blackbox-current"}});
    parser.addHelpOption();
    parser.process(application);

    const QList<QByteArray> inputs = inputsIn(parser.positionalArguments());
    std::mt19937 random(parser.value("seed").toUInt());
    const qint64 limit = parser.value("seconds").toLongLong() * 1000;
    QElapsedTimer clock;
    clock.start();
    const auto box = parser.value("target") == "host" ? makeHostBox() : makeApplicationsBox();
    int rounds = 0;
    int memory = 0;
    for (; limit > 0 ? clock.elapsed() < limit : rounds < inputs.size(); ++rounds) {
        const QByteArray input = limit > 0 ? varied(inputs, random) : inputs.at(rounds);
        keep(parser.value("current"), input);
        box->play(input);
        if (rounds == 100)
            memory = box->memory();
    }
    const int growth = memory == 0 ? 0 : box->memory() - memory;
    require(growth <= memoryBoundKiB, "the programs' memory grows");
    box->finish();
    QFile::remove(parser.value("current"));
    std::printf("%d inputs, no finding; the programs' memory grew by %d KiB\n", rounds, growth);
    return 0;
}
