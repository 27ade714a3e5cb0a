// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The kit's programs, which stand on the client library, and the host's command line. The input is their host, which
// says what it likes, and a stranger on their bus. Afterwards the host comes anew and is honest: they have to find
// their way back to it.

#include "box.h"
#include "bytereader.h"
#include "fakebaresip.h"
#include "finding.h"
#include "largemessage.h"
#include "netstringreader.h"
#include "objectreport.h"
#include "peer.h"
#include "privatebus.h"
#include "processfacts.h"
#include "valuewriter.h"
#include "waitfor.h"

#include <csignal>
#include <deque>

namespace {

constexpr const char *hostName = "org.tarnwickle.voicecall";
constexpr const char *hostPath = "/org/tarnwickle/voicecall";
constexpr int maximumSteps = 40;
// Programs are replaced now and then, and say whether they have lost memory.
constexpr int inputsOfAProcess = 25;

struct Member
{
    const char *interface;
    const char *member;
    const char *signature;
};

// What the host asks of applications, and what others may.
constexpr Member commands[] = {{"zelkovar.Call.Call1", "Accept", ""}, {"zelkovar.Call.Call1", "Reject", "u"},
    {"zelkovar.Call.Call1", "SetHold", "b"}, {"zelkovar.Call.DTMF1", "SendDTMF", "s"},
    {"zelkovar.Call.AudioControl1", "UpdateAudioRoute", "bss"},
    {"zelkovar.Call.AudioControl1", "UpdateAudioRouteState", "a(sibbsa{sv})bss"},
    {"zelkovar.Call.AudioControl1", "UpdateAudioRouteState", "abss"},
    {"zelkovar.Call.AudioControl1", "UpdateAudioRouteState", "a(sibbsa{sv})b"},
    {"zelkovar.Call.AudioControl1", "UpdateAudioRouteState", "a(sibbs)bss"},
    {"org.freedesktop.DBus.ObjectManager", "GetManagedObjects", ""}, {"org.freedesktop.DBus.Properties", "Get", "ss"},
    {"org.freedesktop.DBus.Properties", "GetAll", "s"}, {"org.freedesktop.DBus.Properties", "Set", "ssv"},
    {"org.freedesktop.DBus.Introspectable", "Introspect", ""}, {nullptr, "Accept", ""}, {"x.y", "z", "v"}};

// What the host tells.
constexpr Member signalMembers[] = {{"zelkovar.Call.ServiceManager1", "InterfacesAdded", "soa{sa{sv}}"},
    {"zelkovar.Call.ServiceManager1", "InterfacesRemoved", "soas"},
    {"org.freedesktop.DBus.ObjectManager", "InterfacesAdded", "oa{sa{sv}}"},
    {"org.freedesktop.DBus.ObjectManager", "InterfacesRemoved", "oas"},
    {"org.freedesktop.DBus.Properties", "PropertiesChanged", "sa{sv}as"},
    {"org.tarnwickle.voicecall.Manager1", "ProviderAdded", "ss"},
    {"org.tarnwickle.voicecall.Manager1", "ProviderRemoved", "s"}, {"org.freedesktop.DBus", "NameOwnerChanged", "sss"}};

constexpr const char *signalPaths[]
    = {hostPath, "/zelkovar/call/service", "/org/tarnwickle/voicecall/calls/h1", "/org/freedesktop/DBus", "/"};

struct Question
{
    const char *member;
    const char *signature; ///< of the answer
};
constexpr Question questions[] = {{"GetManagedObjects", "a{oa{sa{sv}}}"}, {"GetAll", "a{sv}"}, {"Get", "v"}};

const QList<QStringList> onceCommands = {{"calls"}, {"calls", "--json"}, {"providers"}, {"devices", "--json"},
    {"answer"}, {"hangup", "h1"}, {"mute", "on"}, {"input", "mic"}};

enum { Simulator, Bridge, Watch };
constexpr std::size_t applications = 2; // of them, which register

struct Target
{
    QString file;
    QStringList arguments;
    Program program;
    int descriptors = 0;
};

struct RemoteObject
{
    std::string owner;
    std::string path;
};

std::string quoted(const QString &text) { return '"' + text.right(2000).toStdString() + '"'; }

[[noreturn]] void reportEnd(Target &target)
{
    const int code = target.program.waitForExit();
    reportFinding(target.file.toStdString() + (code < 0 ? " crashes" : " ends with " + std::to_string(code))
        + ", and says " + quoted(target.program.errorOutput()));
}

class ApplicationsBox : public Box
{
public:
    ApplicationsBox();
    void play(const QByteArray &input) override;
    void finish() override;
    int memory() const override;

private:
    using Step = void (ApplicationsBox::*)(ByteReader &);

    void start();
    void stop();
    void bringCalls();
    void requireHealth();
    bool isRegistered() const { return m_managers.size() >= applications; }
    bool hasAnswered() const { return m_answers >= m_managers.size(); }

    void command(ByteReader &bytes);
    void tell(ByteReader &bytes);
    void forge(ByteReader &bytes);
    void comeAnew(ByteReader &bytes);
    void sendLarge(ByteReader &bytes);

    void pump(ByteReader *bytes);
    void notice(DBusMessage *message);
    void answer(DBusMessage *call, ByteReader *bytes);
    Message honestAnswer(DBusMessage *call) const;
    Message oddAnswer(DBusMessage *call, ByteReader &bytes) const;
    const RemoteObject &object(ByteReader &bytes) const;
    Peer &sender(ByteReader &bytes) { return bytes.oneIn(4) ? *m_stranger : *m_host; }
    static void appendUsualOrOdd(DBusMessage *message, const char *signature, ByteReader &bytes);

    PrivateBus m_bus;
    FakeBaresip m_baresip;
    std::unique_ptr<Peer> m_host;
    std::unique_ptr<Peer> m_stranger;
    Target m_targets[Watch + 1];
    Program m_once;
    /** Call managers that have registered since the host came, and the objects that were seen last. */
    std::deque<RemoteObject> m_managers;
    std::deque<RemoteObject> m_objects;
    /** Answers to GetManagedObjects since the host came. */
    std::size_t m_answers = 0;
    int m_round = 0;
};

ApplicationsBox::ApplicationsBox()
{
    m_bus.useAsSessionBus();
    m_targets[Simulator].file = RINGLET_SIM;
    m_targets[Simulator].file = RINGLET_SIM;
    m_targets[Bridge].file = RINGLET_BARESIP;
    m_targets[Bridge].arguments = QStringList{"--control", QString("127.0.0.1:%1").arg(m_baresip.port())};
    m_targets[Watch].file = CALLCTL;
    m_targets[Watch].arguments = QStringList{"watch"};
}

void ApplicationsBox::start()
{
    for (Target &target : m_targets) {
        require(target.program.start(target.file, target.arguments), "a program cannot be started");
        target.program.setMayEnd(); // how it ends is looked at here
        target.descriptors = 0;
    }
    requireHealth();
    for (Target &target : m_targets)
        target.descriptors = ProcessFacts::openDescriptors(target.program.processId());
}

void ApplicationsBox::stop()
{
    for (Target &target : m_targets) {
        target.program.signal(SIGTERM);
        if (target.program.waitForExit() != 0)
            reportEnd(target);
    }
}

void ApplicationsBox::finish()
{
    if (m_round > 0)
        stop();
}

int ApplicationsBox::memory() const
{
    int sum = 0;
    for (const Target &target : m_targets)
        sum += ProcessFacts::residentMemory(target.program.processId());
    return sum;
}

void ApplicationsBox::play(const QByteArray &input)
{
    if (m_round % inputsOfAProcess == 0) {
        finish();
        start();
    }
    ++m_round;
    ByteReader bytes(reinterpret_cast<const std::uint8_t *>(input.constData()), std::size_t(input.size()));
    bringCalls();
    m_once.start(CALLCTL, onceCommands.at(int(bytes.below(unsigned(onceCommands.size())))));
    m_once.setMayEnd();
    static constexpr Step steps[] = {&ApplicationsBox::command, &ApplicationsBox::command, &ApplicationsBox::command,
        &ApplicationsBox::command, &ApplicationsBox::tell, &ApplicationsBox::tell, &ApplicationsBox::tell,
        &ApplicationsBox::tell, &ApplicationsBox::comeAnew, &ApplicationsBox::forge, &ApplicationsBox::sendLarge};
    for (int step = 0; step < maximumSteps && !bytes.atEnd(); ++step) {
        (this->*bytes.oneOf(steps))(bytes);
        pump(&bytes);
    }
    requireHealth();
}

/** One of each application that can be told to. */
void ApplicationsBox::bringCalls()
{
    m_targets[Simulator].program.type(QString("incoming call%1 sip:sim@example.org").arg(m_round));
    if (m_baresip.connections() > 0)
        m_baresip.send(NetstringReader::frame(
            QString(R"({"event":true,"type":"CALL_INCOMING","id":"%1","accountaor":"sip:a@b","direction":"incoming",)"
                    R"("peeruri":"sip:baresip@example.org","peerdisplayname":"Ben"})")
                .arg(m_round)
                .toUtf8()));
}

void ApplicationsBox::requireHealth()
{
    if (m_host)
        pump(nullptr);
    // Another one: the bus may have ended the connection of the one before.
    m_host = std::make_unique<Peer>(m_bus.address().toStdString());
    m_stranger = std::make_unique<Peer>(m_bus.address().toStdString());
    m_managers.clear();
    m_answers = 0;
    Message rule = makeCall(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "AddMatch");
    append(rule.get(), DBUS_TYPE_STRING,
        std::string("type='signal',interface='org.freedesktop.DBus.ObjectManager',member='InterfacesAdded'"));
    m_host->send(std::move(rule));
    require(waitFor([this] { return m_host->own(hostName, true); }), "the host's name does not become free");
    const auto isEveryone = [this] {
        pump(nullptr);
        for (Target &target : m_targets) {
            if (!target.program.isRunning())
                reportEnd(target);
        }
        const QString alive = QString("alive-%1").arg(m_round);
        return isRegistered() && hasAnswered() && !m_targets[Watch].program.lines().filter(alive).isEmpty();
    };
    if (!waitFor(isEveryone)) {
        std::string found = "of the programs, these have registered:";
        for (const RemoteObject &manager : m_managers)
            found += " " + manager.path;
        reportFinding(found + "; " + std::to_string(m_answers) + " have answered, and callctl watch says "
            + quoted(m_targets[Watch].program.lines().join('\n')));
    }
    require(waitFor([this] {
        pump(nullptr);
        return !m_once.isRunning();
    }),
        "callctl does not end");
    require(m_once.processId() == 0 && m_once.waitForExit() >= 0, "callctl has crashed");
    for (Target &target : m_targets) {
        const auto descriptors = [&] { return ProcessFacts::openDescriptors(target.program.processId()); };
        if (target.descriptors > 0 && !waitFor([&] { return descriptors() <= target.descriptors + 1; }))
            reportFinding(target.file.toStdString() + " has more open files than before");
    }
}

// --- Steps

const RemoteObject &ApplicationsBox::object(ByteReader &bytes) const
{
    const auto &all = m_objects.empty() || bytes.oneIn(4) ? m_managers : m_objects;
    static const RemoteObject nobody{hostName, "/"};
    return all.empty() ? nobody : all[bytes.below(unsigned(all.size()))];
}

void ApplicationsBox::appendUsualOrOdd(DBusMessage *message, const char *signature, ByteReader &bytes)
{
    ValueWriter values(bytes);
    values.startMessage();
    if (bytes.oneIn(3))
        values.appendArguments(message);
    else
        values.appendArguments(message, signature);
}

void ApplicationsBox::command(ByteReader &bytes)
{
    const RemoteObject &target = object(bytes);
    const Member &member = bytes.oneOf(commands);
    Message call = makeCall(target.owner.c_str(), target.path.c_str(), member.interface, member.member);
    appendUsualOrOdd(call.get(), member.signature, bytes);
    sender(bytes).send(std::move(call));
}

void ApplicationsBox::tell(ByteReader &bytes)
{
    const Member &member = bytes.oneOf(signalMembers);
    Message signal = makeSignal(bytes.oneOf(signalPaths), member.interface, member.member);
    appendUsualOrOdd(signal.get(), member.signature, bytes);
    if (bytes.oneIn(4))
        dbus_message_set_destination(signal.get(), object(bytes).owner.c_str());
    sender(bytes).send(std::move(signal));
}

void ApplicationsBox::forge(ByteReader &bytes)
{
    const std::string victim = object(bytes).owner;
    m_stranger->forgeAnswers(victim.c_str(), bytes.below(200));
}

void ApplicationsBox::comeAnew(ByteReader &bytes)
{
    m_host->own(hostName, false);
    if (bytes.oneIn(2))
        pump(&bytes);
    m_host->own(hostName, true);
}

void ApplicationsBox::sendLarge(ByteReader &bytes)
{
    const RemoteObject &target = object(bytes);
    const Member &member = bytes.oneOf(commands);
    Message call = makeCall(target.owner.c_str(), target.path.c_str(), member.interface, member.member);
    DBusMessageIter to;
    dbus_message_iter_init_append(call.get(), &to);
    // Not what the reading limit is: Qt stops to read for good there, in an application as in a host.
    appendLarge(&to, largeSize(bytes, 4 << 20), false);
    sender(bytes).send(std::move(call));
}

// --- Playing the host

/** Hears what has come, and answers: honestly without bytes. */
void ApplicationsBox::pump(ByteReader *bytes)
{
    QCoreApplication::processEvents();
    while (m_stranger->take()) { }
    while (const Message message = m_host->take()) {
        if (dbus_message_get_type(message.get()) == DBUS_MESSAGE_TYPE_METHOD_CALL)
            answer(message.get(), bytes);
        notice(message.get());
    }
}

void ApplicationsBox::notice(DBusMessage *message)
{
    const auto remember = [&](std::deque<RemoteObject> &objects) {
        const char *path = nullptr;
        DBusMessageIter arguments;
        if (!dbus_message_iter_init(message, &arguments)
            || dbus_message_iter_get_arg_type(&arguments) != DBUS_TYPE_OBJECT_PATH)
            return;
        dbus_message_iter_get_basic(&arguments, &path);
        objects.push_back({text(dbus_message_get_sender(message)), path});
    };
    if (dbus_message_is_method_call(message, "zelkovar.Call.Service1", "RegisterCallManager")) {
        remember(m_managers);
        const RemoteObject &manager = m_managers.back();
        m_host->send(makeCall(
            manager.owner.c_str(), manager.path.c_str(), "org.freedesktop.DBus.ObjectManager", "GetManagedObjects"));
    } else if (dbus_message_has_member(message, "InterfacesAdded")) {
        remember(m_objects);
        if (m_objects.size() > 6)
            m_objects.pop_front();
    } else if (dbus_message_has_signature(message, "a{oa{sa{sv}}}")) {
        ++m_answers;
    }
}

void ApplicationsBox::answer(DBusMessage *call, ByteReader *bytes)
{
    if (!bytes || !bytes->oneIn(2)) {
        m_host->send(honestAnswer(call));
        return;
    }
    const unsigned kind = bytes->below(16);
    if (kind == 15) // never
        return;
    if (kind == 14)
        m_host->send(honestAnswer(call)); // and once more
    m_host->send(oddAnswer(call, *bytes));
}

Message ApplicationsBox::honestAnswer(DBusMessage *call) const
{
    const std::string member = text(dbus_message_get_member(call));
    Message reply(dbus_message_new_method_return(call));
    if (member == "GetManagedObjects") {
        const std::string id = std::to_string(m_round);
        appendObjects(reply.get(),
            {{std::string(hostPath) + "/calls/h" + id, {"org.tarnwickle.voicecall.Call1"},
                {{"HandlerId", "h" + id}, {"Uri", "alive-" + id}, {"StatusText", std::string("incoming")}}}});
    } else if (member == "GetAll") {
        DBusMessageIter to;
        dbus_message_iter_init_append(reply.get(), &to);
        appendContainer(&to, DBUS_TYPE_ARRAY, "{sv}", [](DBusMessageIter *) {});
    } else if (member != "RegisterCallManager") {
        return Message(dbus_message_new_error(call, DBUS_ERROR_UNKNOWN_METHOD, "not here"));
    }
    return reply;
}

Message ApplicationsBox::oddAnswer(DBusMessage *call, ByteReader &bytes) const
{
    if (bytes.oneIn(4))
        return Message(dbus_message_new_error(call, "x.y.Error", "no"));
    Message reply(dbus_message_new_method_return(call));
    const char *signature = "";
    for (const Question &question : questions)
        if (dbus_message_has_member(call, question.member))
            signature = question.signature;
    appendUsualOrOdd(reply.get(), signature, bytes);
    return reply;
}

} // namespace

std::unique_ptr<Box> makeApplicationsBox() { return std::make_unique<ApplicationsBox>(); }
