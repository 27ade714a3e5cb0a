// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callfixture.h"
#include "goldenfile.h"

#include <QtCore/QRegularExpression>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>

namespace {

/** Everything that this process sends over the bus, step by step, with names in place of bus names. */
class Conversation
{
public:
    Conversation()
    {
        ScriptedApplication::thisProcess(); // connects
        monitor.becomeMonitor();
    }

    void name(const QString &busName, const QString &name) { names.insert(busName, name); }

    /** Writes down under `title` what was sent since the step before. */
    void note(const QString &title)
    {
        const QString mark = QString("/ tests.Mark.Mark('%1')").arg(title);
        QDBusMessage message = QDBusMessage::createSignal("/", "tests.Mark", "Mark");
        QDBusConnection::sessionBus().send(message << title);
        ASSERT_TRUE(waitFor([&] { return !monitor.traffic().filter(mark).isEmpty(); }));
        written += title + '\n';
        const QString sender = ScriptedApplication::thisProcess() + " > ";
        const QStringList traffic = monitor.traffic();
        for (; seen < traffic.size() && !traffic.at(seen).contains(mark); ++seen)
            // The bus layer follows the owners of names for itself.
            if (traffic.at(seen).startsWith(sender) && !traffic.at(seen).contains("arg0="))
                written += "    " + plain(traffic.at(seen).mid(sender.size())) + '\n';
        ++seen;
    }

    std::string text() const { return written.toStdString(); }

private:
    QString plain(QString line) const
    {
        for (auto known = names.cbegin(); known != names.cend(); ++known)
            line.replace(QRegularExpression(QRegularExpression::escape(known.key()) + "(?![0-9])"), known.value());
        // In which order the bus layer ends the subscriptions of one object is free.
        if (line.contains("RemoveMatch"))
            line.remove(QRegularExpression(",member='[^']*'"));
        return line;
    }

    ScriptedApplication monitor;
    QHash<QString, QString> names;
    QString written;
    int seen = 0;
};

} // namespace

// The bus layer asks for the daemon's interface once in the life of a process, so this is one test and all that
// there is in its executable.
TEST(Conversation, HasTheseMessagesInThisOrder)
{
    Conversation conversation;
    conversation.name(ScriptedApplication::thisProcess(), "HOST");
    ScriptedApplication application;
    conversation.name(application.name(), "APPLICATION");
    RecordingHost host;
    auto factory = std::make_unique<CallProviderFactory>();
    conversation.note("made");
    factory->initialize();
    factory->configure(&host);
    factory->start();
    conversation.note("initialised, configured and started");

    ASSERT_TRUE(application.registerCallManager("/m"));
    conversation.note("a call manager registers");
    ASSERT_TRUE(application.registerCallManager("/m"));
    conversation.note("and once more");
    application.announce("/m", "/m/c1",
        "{'zelkovar.Call.AudioControl1': {}, 'zelkovar.Call.Call1': {'Status': <uint32 5>}, "
        "'zelkovar.Call.DTMF1': {}}");
    ASSERT_TRUE(waitFor([&] { return host.call(); }));
    conversation.note("a call comes");
    host.call()->answer();
    host.call()->hold(true);
    host.call()->sendDtmf("12#");
    conversation.note("it is answered, held although it cannot be, and sent tones");
    emit host.selectedInputDeviceChanged();
    emit host.devicesChanged();
    conversation.note("input and devices change");

    const QPointer<AbstractVoiceCallHandler> call = host.call();
    application.withdraw("/m", "/m/c1", {"zelkovar.Call.Call1"});
    ASSERT_TRUE(waitFor([&] { return !call; }));
    conversation.note("it goes");
    const QPointer<AbstractVoiceCallProvider> provider = host.providers.value(0);
    application.leave();
    ASSERT_TRUE(waitFor([&] { return !provider; }));
    conversation.note("the application leaves");
    factory.reset();
    conversation.note("destroyed");
    EXPECT_EQ(conversation.text(), goldenText(GOLDEN "/conversation.txt"));
}
