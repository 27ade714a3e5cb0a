// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// The desktop host with the plug-in as a file, on a real bus, beside an application that is honest: its call has to
// come, be answered and end every time, and nothing may be left of the others.

#include "box.h"
#include "busstage.h"
#include "bytereader.h"
#include "finding.h"
#include "largemessage.h"
#include "privatebus.h"
#include "processfacts.h"
#include "scriptedapplication.h"
#include "sequence.h"
#include "valuewriter.h"
#include "waitfor.h"

#include <QtDBus/QDBusArgument>

namespace {

const QString managerPath = "/honest";
const QString callPath = "/honest/call";

// An input that begins so is not of Sequence's steps.
const QByteArray loudMark("\0LOUD", 5);

constexpr int loudSteps = 12;

struct Method
{
    const char *interface;
    const char *member;
    const char *signature;
};
// Of the host's own object; the first is what strangers do most.
constexpr Method methods[] = {{"FakeAudio1", "AddDevice", "(sibbsa{sv})"}, {"FakeAudio1", "AddDevice", "(sibbsa{sv})"},
    {"FakeAudio1", "RemoveDevice", "s"}, {"Audio1", "SelectInputDevice", "s"}, {"Audio1", "SelectOutputDevice", "s"},
    {"Audio1", "SetMicrophoneMuted", "b"}, {"Manager1", "Dial", "ss"}, {"Call1", "SendDtmf", "s"}};

class HostBox : public Box
{
public:
    HostBox();

    void play(const QByteArray &input) override;
    void finish() override;
    int memory() const override { return ProcessFacts::residentMemory(m_pid); }

private:
    void playLoud(ByteReader &bytes);
    void sendLarge(Peer &peer, ByteReader &bytes);
    void forgeAnswers(Peer &peer, ByteReader &bytes);
    void callHost(Peer &peer, ByteReader &bytes);
    void registerLongPaths(Peer &peer, ByteReader &bytes);
    void removeDevices();
    QStringList devices() const;
    void requireNothingLeft();
    void announceHonestCall();
    void carryHonestCall();

    PrivateBus m_bus;
    DesktopHost m_host;
    std::unique_ptr<ScriptedApplication> m_honest;
    qint64 m_pid = 0;
    int m_descriptors = 0;
    QStringList m_devices;
};

HostBox::HostBox()
{
    m_bus.useAsSessionBus();
    // What it would log fills the pipe faster than it is read here.
    qputenv("QT_LOGGING_RULES", "*=false");
    require(m_host.start(), "the host does not start");
    m_honest = std::make_unique<ScriptedApplication>();
    require(
        m_honest->registerCallManager(managerPath, DesktopHost::name()), "the honest application is not registered");
    require(m_honest->settle(DesktopHost::name()), "the host does not answer");
    m_pid = m_host.program().processId();
    m_descriptors = ProcessFacts::openDescriptors(m_pid);
    m_devices = devices();
}

void HostBox::play(const QByteArray &input)
{
    const bool isLoud = input.startsWith(loudMark);
    const QByteArray rest = isLoud ? input.mid(loudMark.size()) : input;
    ByteReader bytes(reinterpret_cast<const std::uint8_t *>(rest.constData()), std::size_t(rest.size()));
    BusStage stage(m_bus.address().toStdString(), m_host, m_honest->name());
    announceHonestCall();
    if (isLoud)
        playLoud(bytes);
    else
        Sequence(bytes, stage).playCalls();
    carryHonestCall();
    stage.everybodyLeaves();
    requireNothingLeft();
}

/** Messages at the limits of what is carried, wrong types for the host's own methods, and answers nobody gave. */
void HostBox::playLoud(ByteReader &bytes)
{
    const std::string address = m_bus.address().toStdString();
    for (int step = 0; step < loudSteps && !bytes.atEnd(); ++step) {
        Peer peer(address);
        switch (bytes.below(4)) {
        case 0:
            callHost(peer, bytes);
            break;
        case 1:
            sendLarge(peer, bytes);
            break;
        case 2:
            registerLongPaths(peer, bytes);
            break;
        default:
            forgeAnswers(peer, bytes);
        }
    }
    require(waitFor([&] { return m_honest->settle(DesktopHost::name()); }), "the host does not answer any more");
    removeDevices();
}

/** Of a call with a large property, to everybody or to the host, or a call with a large argument. */
void HostBox::sendLarge(Peer &peer, ByteReader &bytes)
{
    const unsigned kind = bytes.below(3);
    const unsigned size = largeSize(bytes, readingLimit);
    Message message = kind == 0 ? makeCall(DesktopHost::name().toUtf8().constData(), "/x", "x.y", "z")
                                : makeSignal("/m", "org.freedesktop.DBus.ObjectManager", "InterfacesAdded");
    if (kind == 1)
        dbus_message_set_destination(message.get(), DesktopHost::name().toUtf8().constData());
    DBusMessageIter to;
    dbus_message_iter_init_append(message.get(), &to);
    if (kind == 0) {
        appendLarge(&to, size, false);
        peer.send(std::move(message));
        return;
    }
    append(message.get(), DBUS_TYPE_OBJECT_PATH, std::string("/m/c1"));
    dbus_message_iter_init_append(message.get(), &to);
    appendContainer(&to, DBUS_TYPE_ARRAY, "{sa{sv}}", [&](DBusMessageIter *interfaces) {
        appendContainer(interfaces, DBUS_TYPE_DICT_ENTRY, nullptr, [&](DBusMessageIter *interface) {
            const char *name = "zelkovar.Call.Call1";
            dbus_message_iter_append_basic(interface, DBUS_TYPE_STRING, &name);
            appendContainer(interface, DBUS_TYPE_ARRAY, "{sv}", [&](DBusMessageIter *properties) {
                appendContainer(properties, DBUS_TYPE_DICT_ENTRY, nullptr, [&](DBusMessageIter *property) {
                    const char *key = "Other";
                    dbus_message_iter_append_basic(property, DBUS_TYPE_STRING, &key);
                    appendLarge(property, size, true);
                });
            });
        });
    });
    Message registration = makeCall(DesktopHost::name().toUtf8().constData(), "/zelkovar/call/service",
        "zelkovar.Call.Service1", "RegisterCallManager");
    append(registration.get(), DBUS_TYPE_OBJECT_PATH, std::string("/m"));
    peer.send(std::move(registration));
    require(m_honest->settle(DesktopHost::name()), "the host does not answer a registration");
    peer.send(std::move(message));
}

/** Right behind the registration of an application that does not answer by itself. */
void HostBox::forgeAnswers(Peer &peer, ByteReader &bytes)
{
    ScriptedApplication victim;
    victim.holdSnapshot();
    require(victim.registerCallManager("/m", DesktopHost::name()), "the host does not answer a registration");
    peer.forgeAnswers(DesktopHost::name().toUtf8().constData(), 200 + bytes.byte());
    require(peer.isAnswered(makeCall(DesktopHost::name().toUtf8().constData(), "/zelkovar/call/service",
                "zelkovar.Call.ServiceManager1", "ListCallManagers")),
        "the host does not answer any more");
    require(m_host.table().filter("forged").isEmpty(), "a stranger's answer is believed");
}

void HostBox::callHost(Peer &peer, ByteReader &bytes)
{
    ValueWriter values(bytes);
    values.startMessage();
    const Method &method = bytes.oneOf(methods);
    const std::string interface = std::string("org.tarnwickle.voicecall.") + method.interface;
    Message call = makeCall(
        DesktopHost::name().toUtf8().constData(), "/org/tarnwickle/voicecall", interface.c_str(), method.member);
    if (bytes.oneIn(4))
        values.appendArguments(call.get());
    else
        values.appendArguments(call.get(), method.signature);
    peer.send(std::move(call));
}

void HostBox::registerLongPaths(Peer &peer, ByteReader &bytes)
{
    for (unsigned count = 1 + bytes.below(4); count > 0; --count) {
        Message call = makeCall(DesktopHost::name().toUtf8().constData(), "/zelkovar/call/service",
            "zelkovar.Call.Service1", "RegisterCallManager");
        append(call.get(), DBUS_TYPE_OBJECT_PATH, largePath(largeSize(bytes, 1000000) - 1200 + count));
        peer.send(std::move(call));
    }
}

/** Ids of the audio devices; that they cannot be told is a finding. */
QStringList HostBox::devices() const
{
    const QVariant value = m_host.property("Audio1", "Devices");
    require(value.isValid(), "the host does not tell its audio devices any more");
    const auto list = value.value<QDBusArgument>();
    QStringList ids;
    for (list.beginArray(); !list.atEnd();) {
        list.beginStructure();
        ids.append(list.asVariant().toString());
        while (!list.atEnd())
            list.asVariant();
        list.endStructure();
    }
    list.endArray();
    return ids;
}

void HostBox::removeDevices()
{
    const QStringList all = devices();
    for (const QString &id : all)
        if (!m_devices.contains(id))
            m_host.manage("FakeAudio1", "RemoveDevice", {id});
    const QStringList left = devices();
    for (const QString &id : qAsConst(m_devices))
        if (!left.contains(id)) // one of those that the host began with was removed
            m_devices = left;
}

void HostBox::announceHonestCall()
{
    m_honest->forgetWhatArrived();
    m_honest->announce(managerPath, callPath,
        "{'zelkovar.Call.Call1': {'Status': <uint32 3>, 'Incoming': <true>, 'Uri': <'honest'>}}");
    require(waitFor([&] { return m_host.table().contains("honest=incoming"); }), "the honest call does not come");
}

void HostBox::carryHonestCall()
{
    require(m_host.commandTo("honest", "Answer").isEmpty(), "the host cannot answer the honest call");
    require(
        waitFor([&] { return !m_honest->commands().filter("Accept()").isEmpty(); }), "the honest call is not answered");
    m_honest->changeStatus(callPath, 5);
    require(
        waitFor([&] { return m_host.table().contains("honest=active"); }), "the honest call does not become active");
    m_honest->withdraw(managerPath, callPath, {"zelkovar.Call.Call1"});
}

void HostBox::requireNothingLeft()
{
    require(waitFor([&] { return m_host.table().isEmpty(); }), "a call is left");
    require(waitFor([&] { return m_host.providers().size() == 1; }), "a provider is left, or the honest one is gone");
    require(waitFor([&] { return ProcessFacts::openDescriptors(m_pid) <= m_descriptors; }),
        "the host holds more descriptors than before");
}

void HostBox::finish()
{
    const int code = m_host.stop();
    if (code != 0)
        reportFinding(
            "the host ends with " + std::to_string(code) + ":\n" + m_host.program().errorOutput().toStdString());
}

} // namespace

std::unique_ptr<Box> makeHostBox() { return std::make_unique<HostBox>(); }
