// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Every scenario of the simulator with the real host and the real plug-in: it ends well, the host shows the
// calls that the scenario names, the checker finds the faults that it names, and afterwards the host is as good as new.

#include "callhistory.h"
#include "desktophost.h"
#include "printers.h"
#include "waitfor.h"

#include <QtCore/QDir>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>
#include <QtCore/QSet>
#include <QtCore/QTemporaryDir>
#include <algorithm>
#include <csignal>
#include <functional>
#include <gmock/gmock.h>

namespace {

const QString sim = QStringLiteral(RINGLET_SIM);
const QString checker = QStringLiteral(RINGLET_CHECK);

QStringList linesOf(const QString &scenario)
{
    QFile file(QStringLiteral(SCENARIOS "/%1.script").arg(scenario));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split('\n') : QStringList();
}

// The tables that a scenario says the host shows, from the comments that begin with "shows:".
QStringList expectedTables(const QString &scenario)
{
    const QString start = QStringLiteral("# shows: ");
    QStringList tables;
    for (const QString &line : linesOf(scenario)) {
        if (line.startsWith(start))
            tables.append(line.mid(start.size()));
    }
    return tables;
}

// "..." stands for any number of tables.
QRegularExpression patternOf(const QStringList &tables)
{
    QString pattern;
    for (const QString &table : tables)
        pattern += table == QLatin1String("...") ? QStringLiteral("(.*\n)*")
                                                 : QRegularExpression::escape(table) + QLatin1Char('\n');
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern));
}

QString textOf(const QStringList &tables) { return tables.join('\n') + '\n'; }

// What somebody does at the host who is asked to by a line that begins with "please".
class Operator
{
public:
    explicit Operator(DesktopHost &host) : m_host(host) { }

    // Obeys the lines that are new since the last time.
    void obey(const QStringList &lines)
    {
        while (m_next < lines.size()) {
            const QStringList words = lines.at(m_next++).split(' ');
            if (words.constFirst() == "please") {
                EXPECT_TRUE(act(words.at(1), words.mid(2))) << words.join(' ').toStdString();
            }
        }
    }

private:
    bool call(const QString &address, const QString &method, const QVariantList &arguments = {})
    {
        return m_host.commandTo(address, method, arguments).isEmpty();
    }

    bool audio(const QString &method, const QVariant &argument)
    {
        return m_host.manage("Audio1", method, {argument}).isEmpty();
    }

    bool restart()
    {
        m_host.kill();
        return m_host.start();
    }

    bool act(const QString &verb, const QStringList &words)
    {
        const QMap<QString, std::function<bool()>> deeds = {
            {"answer", [&] { return call(words.at(0), "Answer"); }},
            {"hangup", [&] { return call(words.at(0), "Hangup"); }},
            {"hold", [&] { return call(words.at(0), "Hold", {words.at(1) == "on"}); }},
            {"dtmf", [&] { return call(words.at(0), "SendDtmf", {words.at(1)}); }},
            {"mute", [&] { return audio("SetMicrophoneMuted", words.at(0) == "on"); }},
            {"input", [&] { return audio("SelectInputDevice", words.at(0)); }},
            {"output", [&] { return audio("SelectOutputDevice", words.at(0)); }},
            {"restart", [&] { return restart(); }},
        };
        return deeds.contains(verb) && deeds.value(verb)();
    }

    DesktopHost &m_host;
    int m_next = 0;
};

class EveryScenario : public testing::TestWithParam<QString>
{
protected:
    void SetUp() override { ASSERT_TRUE(host.start()) << host.program().errorOutput().toStdString(); }

    void TearDown() override { EXPECT_EQ(host.stop(), 0) << host.program().errorOutput().toStdString(); }

    // Does what the program asks for until it ends; its exit code.
    int runToItsEnd(Program *program)
    {
        Operator atTheHost(host);
        waitFor([&] {
            atTheHost.obey(program->lines());
            return !program->isRunning();
        });
        return program->waitForExit();
    }

    void expectAnHonestCallToWork()
    {
        Program honest;
        ASSERT_TRUE(honest.start(sim, {"--incoming", "sip:honest@example.org"}));
        ASSERT_TRUE(host.waitForTable({"sip:honest@example.org=incoming"}));
        EXPECT_EQ(host.commandTo("sip:honest@example.org", "Answer"), QString());
        EXPECT_TRUE(host.waitForTable({"sip:honest@example.org=active"}));
        EXPECT_EQ(host.commandTo("sip:honest@example.org", "Hangup"), QString());
        EXPECT_TRUE(host.waitForTable({}));
    }

    DesktopHost host;
};

QStringList scenarioNames()
{
    QStringList names;
    for (const QString &file : QDir(SCENARIOS).entryList({"*.script"}, QDir::Files))
        names.append(file.chopped(7));
    names.sort();
    return names;
}

// What the checker finds in a scenario, from its comment that begins with "rule:"; in brackets stands why. With a
// question mark stands what it finds if one message happens to be faster than another.
QSet<QString> namedRules(const QString &scenario)
{
    const QString start = QStringLiteral("# rule: ");
    QSet<QString> rules;
    for (const QString &line : linesOf(scenario)) {
        if (!line.startsWith(start))
            continue;
        for (const QString &rule : line.mid(start.size()).section(" (", 0, 0).split(' '))
            rules.insert(rule);
    }
    rules.remove("none");
    return rules;
}

QSet<QString> expectedRules(const QString &scenario)
{
    QSet<QString> rules = namedRules(scenario);
    for (const QString &rule : namedRules(scenario)) {
        if (rule.endsWith('?'))
            rules.remove(rule);
    }
    return rules;
}

// Of these rules, those that hang neither on chance nor, unless the scenario is about that, on how busy the machine is.
QSet<QString> withoutChance(QSet<QString> rules, const QString &scenario)
{
    for (const QString &rule : {QStringLiteral("command-late"), QStringLiteral("snapshot-late")}) {
        if (!namedRules(scenario).contains(rule))
            rules.remove(rule);
    }
    for (const QString &rule : namedRules(scenario))
        rules.remove(rule.endsWith('?') ? rule.chopped(1) : QString());
    return rules;
}

// Records what goes over the bus, and reads it when it has ended.
class Recorder
{
public:
    bool start()
    {
        return m_folder.isValid() && m_program.start(checker, {"record", capture()})
            && m_program.waitForError("recording");
    }

    // Errors and warnings, and those notes that are expected.
    QSet<QString> rules(const QSet<QString> &notes)
    {
        m_program.signal(SIGINT);
        EXPECT_EQ(m_program.waitForExit(), 0) << m_program.errorOutput().toStdString();
        Program reader;
        EXPECT_TRUE(reader.start(checker, {"read", capture(), "--format", "json"}));
        const int code = reader.waitForExit();
        EXPECT_TRUE(code == 0 || code == 1) << reader.errorOutput().toStdString();
        const QJsonObject found = QJsonDocument::fromJson(reader.lines().join('\n').toUtf8()).object();
        QSet<QString> rules;
        for (const QJsonValue &finding : found["findings"].toArray()) {
            if (finding["severity"] != "note" || notes.contains(finding["rule"].toString()))
                rules.insert(finding["rule"].toString());
        }
        return rules;
    }

private:
    QString capture() const { return m_folder.filePath("capture"); }

    QTemporaryDir m_folder;
    Program m_program;
};

// GoogleTest takes letters, digits and _ only.
std::string testName(const testing::TestParamInfo<QString> &info)
{
    QString name;
    for (const QString &word : info.param.split('-'))
        name += word.left(1).toUpper() + word.mid(1);
    return name.toStdString();
}

} // namespace

TEST_P(EveryScenario, EndsWellAndLeavesTheHostAsGoodAsNew)
{
    const QStringList expected = expectedTables(GetParam());
    ASSERT_FALSE(expected.isEmpty()) << "it does not say what the host shows, with comments \"# shows: TABLE\"";
    CallHistory history;
    Recorder recorder;
    ASSERT_TRUE(recorder.start());
    Program program;
    ASSERT_TRUE(program.start(sim, {"--scenario", GetParam()}));
    EXPECT_EQ(runToItsEnd(&program), 0) << program.lines().join('\n').toStdString() << '\n'
                                        << program.errorOutput().toStdString();
    EXPECT_EQ(program.errorOutput(), QString());

    EXPECT_TRUE(waitFor([&] { return host.providers().isEmpty(); }));
    EXPECT_EQ(host.table(), QStringList());
    // Waiting for the programs, it delivers the host's last signals, too.
    const QSet<QString> rules = recorder.rules(expectedRules(GetParam()));
    // A process that scripts/check slow has stopped does answer late.
    if (!qEnvironmentVariableIsSet("RINGLET_SLOW")) {
        EXPECT_EQ(withoutChance(rules, GetParam()), expectedRules(GetParam()));
    }
    EXPECT_TRUE(waitFor([&] { return history.isEmpty(); }));
    const QStringList shown = history.tables().isEmpty() ? QStringList("nothing") : history.tables();
    EXPECT_TRUE(patternOf(expected).match(textOf(shown)).hasMatch())
        << "it says that the host shows\n"
        << textOf(expected).toStdString() << "and the host has shown\n"
        << textOf(shown).toStdString();
    expectAnHonestCallToWork();
}

TEST(Scenarios, SayWhichRulesTheirFaultsBreak)
{
    for (const QString &name : scenarioNames()) {
        const QStringList lines = linesOf(name);
        const bool says
            = std::any_of(lines.begin(), lines.end(), [](const QString &line) { return line.startsWith("# rule: "); });
        EXPECT_EQ(says, name.startsWith("fault-")) << name.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(OfTheKit, EveryScenario, testing::ValuesIn(scenarioNames()), testName);

TEST(Scenarios, AreListedWithADescriptionEach)
{
    Program program;
    ASSERT_TRUE(program.start(sim, {"--list-scenarios"}));
    ASSERT_EQ(program.waitForExit(), 0);
    const QStringList names = scenarioNames();
    ASSERT_EQ(program.lines().size(), names.size());
    for (int i = 0; i < names.size(); ++i) {
        EXPECT_EQ(program.lines().at(i).section(' ', 0, 0), names.at(i));
        const QString description = program.lines().at(i).section(' ', 1).trimmed();
        EXPECT_TRUE(description.size() > 10 && description.endsWith('.')) << names.at(i).toStdString();
        EXPECT_TRUE(linesOf(names.at(i)).contains("# " + description)) << names.at(i).toStdString();
    }
}
