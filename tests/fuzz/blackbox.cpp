// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Plays inputs against the desktop host with the plug-in as a file, on a real bus, beside an application that is
// honest: its call has to come, be answered and end every time, and nothing may be left of the others.

#include "busstage.h"
#include "bytereader.h"
#include "finding.h"
#include "privatebus.h"
#include "scriptedapplication.h"
#include "sequence.h"
#include "waitfor.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <cstdio>
#include <random>

namespace {

const QString managerPath = "/honest";
const QString callPath = "/honest/call";

int descriptorsOf(DesktopHost &host)
{
    return QDir(QStringLiteral("/proc/%1/fd").arg(host.program().processId()))
        .entryList(QDir::System | QDir::Files)
        .size();
}

/** Resident memory in KiB. */
int memoryOf(DesktopHost &host)
{
    QFile file(QStringLiteral("/proc/%1/status").arg(host.program().processId()));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QString status = file.readAll();
    return status.section("VmRSS:", 1).trimmed().section(' ', 0, 0).toInt();
}

class BlackBox
{
public:
    BlackBox();

    /** One input. */
    void play(const QByteArray &input);

    /** Ends the host, which then says whether it has lost memory. */
    void finish();

    int memory() { return memoryOf(m_host); }

private:
    void requireNothingLeft();
    void announceHonestCall();
    void carryHonestCall();

    PrivateBus m_bus;
    DesktopHost m_host;
    std::unique_ptr<ScriptedApplication> m_honest;
    int m_descriptors = 0;
};

BlackBox::BlackBox()
{
    m_bus.useAsSessionBus();
    // What it would log fills the pipe faster than it is read here.
    qputenv("QT_LOGGING_RULES", "*=false");
    require(m_host.start(), "the host does not start");
    m_honest = std::make_unique<ScriptedApplication>();
    require(
        m_honest->registerCallManager(managerPath, DesktopHost::name()), "the honest application is not registered");
    require(m_honest->settle(DesktopHost::name()), "the host does not answer");
    m_descriptors = descriptorsOf(m_host);
}

void BlackBox::play(const QByteArray &input)
{
    ByteReader bytes(reinterpret_cast<const std::uint8_t *>(input.constData()), std::size_t(input.size()));
    BusStage stage(m_bus.address().toStdString(), m_host, m_honest->name());
    announceHonestCall();
    Sequence(bytes, stage).playCalls();
    carryHonestCall();
    stage.everybodyLeaves();
    requireNothingLeft();
}

void BlackBox::announceHonestCall()
{
    m_honest->forgetWhatArrived();
    m_honest->announce(managerPath, callPath,
        "{'zelkovar.Call.Call1': {'Status': <uint32 3>, 'Incoming': <true>, 'Uri': <'honest'>}}");
    require(waitFor([&] { return m_host.table().contains("honest=incoming"); }), "the honest call does not come");
}

void BlackBox::carryHonestCall()
{
    require(m_host.commandTo("honest", "Answer").isEmpty(), "the host cannot answer the honest call");
    require(
        waitFor([&] { return !m_honest->commands().filter("Accept()").isEmpty(); }), "the honest call is not answered");
    m_honest->changeStatus(callPath, 5);
    require(
        waitFor([&] { return m_host.table().contains("honest=active"); }), "the honest call does not become active");
    m_honest->withdraw(managerPath, callPath, {"zelkovar.Call.Call1"});
}

void BlackBox::requireNothingLeft()
{
    require(waitFor([&] { return m_host.table().isEmpty(); }), "a call is left");
    require(waitFor([&] { return m_host.providers().size() == 1; }), "a provider is left, or the honest one is gone");
    require(
        waitFor([&] { return descriptorsOf(m_host) <= m_descriptors; }), "the host holds more descriptors than before");
}

void BlackBox::finish()
{
    const int code = m_host.stop();
    if (code != 0)
        reportFinding(
            "the host ends with " + std::to_string(code) + ":\n" + m_host.program().errorOutput().toStdString());
}

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

/** One that is kept with some of its bytes changed, or one made up of nothing but chance. */
QByteArray varied(const QList<QByteArray> &inputs, std::mt19937 &random)
{
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
 * What the host's memory may grow by from its hundredth input to its last. A sanitizer's allocator keeps what was
 * freed: there, the search for lost memory at the host's end has to do.
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
    parser.addOptions({{"seconds", "Plays variations for so long.", "N", "0"}, {"seed", "Of the variations.", "N", "1"},
        {"current", "Where the input that is being played is kept.", "FILE", "blackbox-current"}});
    parser.addHelpOption();
    parser.process(application);

    const QList<QByteArray> inputs = inputsIn(parser.positionalArguments());
    std::mt19937 random(parser.value("seed").toUInt());
    const qint64 limit = parser.value("seconds").toLongLong() * 1000;
    QElapsedTimer clock;
    clock.start();
    BlackBox box;
    int rounds = 0;
    int memory = 0;
    for (; limit > 0 ? clock.elapsed() < limit : rounds < inputs.size(); ++rounds) {
        const QByteArray input = limit > 0 ? varied(inputs, random) : inputs.at(rounds);
        keep(parser.value("current"), input);
        box.play(input);
        if (rounds == 100)
            memory = box.memory();
    }
    const int growth = memory == 0 ? 0 : box.memory() - memory;
    require(growth <= memoryBoundKiB, "the host's memory grows");
    box.finish();
    QFile::remove(parser.value("current"));
    std::printf("%d inputs, no finding; the host's memory grew by %d KiB\n", rounds, growth);
    return 0;
}
