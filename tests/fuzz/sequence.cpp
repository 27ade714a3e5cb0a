// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "sequence.h"

namespace {

constexpr int maximumSteps = 200;

constexpr const char *servicePath = "/zelkovar/call/service";
constexpr const char *serviceInterface = "zelkovar.Call.Service1";
constexpr const char *objectManagerInterface = "org.freedesktop.DBus.ObjectManager";
constexpr const char *callInterface = "zelkovar.Call.Call1";
constexpr const char *toneInterface = "zelkovar.Call.DTMF1";
constexpr const char *audioInterface = "zelkovar.Call.AudioControl1";

// Few, and one of them more often than all others, so that steps meet the same objects.
constexpr int applications[] = {0, 0, 0, 0, 1, 2};
constexpr const char *managerPaths[] = {"/m", "/m", "/m", "/m", "/", "/m/sub", "/zelkovar/call/service"};
constexpr const char *callPaths[] = {"/m/c1", "/m/c1", "/m/c1", "/m/c2", "/m/C", "/m"};

constexpr const char *interfaceNames[]
    = {callInterface, toneInterface, audioInterface, "org.freedesktop.DBus.Properties", objectManagerInterface,
        "zelkovar.Call.call1", "zelkovar.Call.Call1 ", "", "x", "\xEF\xBF\xBF", "%1@%2"};

struct Property
{
    const char *name;
    const char *type;
};
constexpr Property properties[] = {{"Status", "u"}, {"Incoming", "b"}, {"Holdable", "b"}, {"RemoteName", "s"},
    {"Uri", "s"}, {"LocalName", "s"}, {"LocalHandle", "s"}, {"", "v"}, {"Odd", "a{sv}"}, {"\xEF\xBF\xBF", "h"},
    {"Status", "s"}, {"RemoteName", "as"}, {"Uri", "u"}, {"Incoming", "s"}, {"Holdable", "h"}};

struct Member
{
    const char *interface;
    const char *member;
    const char *signature;
};

// Signals that the plug-in listens to, and some that look like them.
constexpr Member signalMembers[] = {{objectManagerInterface, "InterfacesAdded", "oa{sa{sv}}"},
    {objectManagerInterface, "InterfacesRemoved", "oas"}, {callInterface, "StatusChanged", "u"},
    {audioInterface, "RequestMute", "b"}, {audioInterface, "RequestAudioRoute", "ss"},
    {"org.freedesktop.DBus", "NameOwnerChanged", "sss"}, {"org.freedesktop.DBus", "NameLost", "s"},
    {"org.freedesktop.DBus", "NameAcquired", "s"}, {"org.freedesktop.DBus.Properties", "PropertiesChanged", "sa{sv}as"},
    {"zelkovar.Call.ServiceManager1", "InterfacesAdded", "soa{sa{sv}}"}, {callInterface, "Accept", ""},
    {"x.y", "StatusChanged", "u"}};

// Methods that the plug-in's object has, that the bus layer adds, and that nobody has.
constexpr Member methods[]
    = {{serviceInterface, "RegisterCallManager", "o"}, {"zelkovar.Call.ServiceManager1", "ListCallManagers", ""},
        {nullptr, "RegisterCallManager", "o"}, {nullptr, "ListCallManagers", ""},
        {"org.freedesktop.DBus.Introspectable", "Introspect", ""}, {"org.freedesktop.DBus.Properties", "Get", "ss"},
        {"org.freedesktop.DBus.Properties", "GetAll", "s"}, {"org.freedesktop.DBus.Properties", "Set", "ssv"},
        {"org.freedesktop.DBus.Peer", "Ping", ""}, {"org.freedesktop.DBus.Peer", "GetMachineId", ""},
        {objectManagerInterface, "GetManagedObjects", ""}, {serviceInterface, "registerCallManager", "o"},
        {serviceInterface, "deleteLater", ""}, {"zelkovar.Call.ServiceManager1", "InterfacesAdded", "soa{sa{sv}}"},
        {nullptr, "setObjectName", "s"}, {nullptr, "onNameOwnerChanged", "sss"}, {"x.y", "z", "v"}};

constexpr const char *objectPaths[] = {servicePath, "/", "/zelkovar", "/zelkovar/call", "/zelkovar/call/service/x"};

constexpr HostStep::Kind commands[] = {HostStep::Answer, HostStep::Hangup, HostStep::Hold, HostStep::Release,
    HostStep::SendDtmf, HostStep::Tick, HostStep::ReadCall, HostStep::ReadProvider, HostStep::Dial, HostStep::Deflect,
    HostStep::Merge, HostStep::Split, HostStep::StrayTick, HostStep::React};

constexpr HostStep::Kind audioChanges[]
    = {HostStep::ChangeDevices, HostStep::SelectInput, HostStep::SelectOutput, HostStep::ToggleMute};

constexpr HostStep::Kind controls[]
    = {HostStep::Idle, HostStep::Configure, HostStep::Initialize, HostStep::ConfigureWithoutHost, HostStep::Reload};

constexpr Answer distortions[]
    = {Answer::Error, Answer::WrongType, Answer::Twice, Answer::Odd, Answer::Late, Answer::Departure};

} // namespace

// A table rather than equal chances: calls have to come about before anything can happen to them.
const Sequence::Choice Sequence::choices[] = {{&Sequence::registerManager, 24}, {&Sequence::announce, 48},
    {&Sequence::withdraw, 20}, {&Sequence::changeStatus, 24}, {&Sequence::requestMute, 6}, {&Sequence::requestRoute, 6},
    {&Sequence::answerRequest, 28}, {&Sequence::sendOddSignal, 12}, {&Sequence::callPlugin, 16},
    {&Sequence::sendStrayReply, 4}, {&Sequence::leave, 8}, {&Sequence::command, 32}, {&Sequence::changeAudio, 10},
    {&Sequence::control, 4}, {&Sequence::announceOwner, 4}, {&Sequence::distort, 6}, {&Sequence::settle, 4}};

Sequence::Step Sequence::chosenStep()
{
    unsigned all = 0;
    for (const Choice &choice : choices)
        all += choice.weight;
    unsigned pick = m_bytes.below(all);
    const Choice *choice = choices;
    for (; pick >= choice->weight; ++choice)
        pick -= choice->weight;
    return choice->step;
}

void Sequence::playCalls()
{
    load();
    for (int step = 0; step < maximumSteps && !m_bytes.atEnd(); ++step)
        take(chosenStep());
}

void Sequence::playValues()
{
    m_stage.act({HostStep::Initialize});
    m_stage.act({HostStep::Configure});
    take(&Sequence::registerManager);
    for (int step = 0; step < maximumSteps && !m_bytes.atEnd(); ++step) {
        take(&Sequence::announce);
        if (m_bytes.oneIn(4))
            take(&Sequence::answerRequest);
        if (m_bytes.oneIn(8))
            take(&Sequence::withdraw);
    }
}

/** Each sends one message at most. */
void Sequence::take(Step step)
{
    m_values.startMessage();
    (this->*step)();
}

/** Mostly as a host does it; otherwise something is left out, and may come later. */
void Sequence::load()
{
    const unsigned omitted = m_bytes.below(16);
    if (omitted != 15)
        m_stage.act({HostStep::Initialize});
    if (omitted != 14)
        m_stage.act({HostStep::Configure});
}

// --- Applications

int Sequence::application() { return m_bytes.oneOf(applications); }

std::string Sequence::managerPath() { return m_bytes.oneIn(8) ? m_values.path() : m_bytes.oneOf(managerPaths); }

std::string Sequence::callPath() { return m_bytes.oneIn(8) ? m_values.path() : m_bytes.oneOf(callPaths); }

const char *Sequence::interfaceName()
{
    return m_bytes.oneIn(4) ? m_bytes.oneOf(interfaceNames) : interfaceNames[m_bytes.below(3)];
}

/**
 * A signal goes to everybody, or to the host alone. What comes next mostly finds the message handled: an application
 * that does not wait is not heard before the host has subscribed to it.
 */
void Sequence::send(int sender, Message message)
{
    const bool isSignal = dbus_message_get_type(message.get()) == DBUS_MESSAGE_TYPE_SIGNAL;
    if (isSignal && m_bytes.oneIn(4))
        dbus_message_set_destination(message.get(), m_stage.hostName().c_str());
    m_stage.send(sender, std::move(message));
    if (!m_bytes.oneIn(4))
        m_stage.settle();
}

void Sequence::registerManager()
{
    const int caller = application();
    Message call = makeCall(m_stage.hostName().c_str(), servicePath, serviceInterface, "RegisterCallManager");
    append(call.get(), DBUS_TYPE_OBJECT_PATH, managerPath());
    dbus_message_set_no_reply(call.get(), m_bytes.oneIn(8));
    send(caller, std::move(call));
}

void Sequence::announce()
{
    const int sender = application();
    Message signal = makeSignal(managerPath().c_str(), objectManagerInterface, "InterfacesAdded");
    append(signal.get(), DBUS_TYPE_OBJECT_PATH, callPath());
    DBusMessageIter to;
    dbus_message_iter_init_append(signal.get(), &to);
    appendInterfaces(&to, 0);
    send(sender, std::move(signal));
}

void Sequence::withdraw()
{
    const int sender = application();
    Message signal = makeSignal(managerPath().c_str(), objectManagerInterface, "InterfacesRemoved");
    append(signal.get(), DBUS_TYPE_OBJECT_PATH, callPath());
    DBusMessageIter to;
    dbus_message_iter_init_append(signal.get(), &to);
    appendNames(&to);
    send(sender, std::move(signal));
}

void Sequence::changeStatus()
{
    const int sender = application();
    Message signal = makeSignal(callPath().c_str(), callInterface, "StatusChanged");
    append(signal.get(), DBUS_TYPE_UINT32, dbus_uint32_t(m_bytes.oneIn(8) ? m_bytes.number(4) : m_bytes.below(10)));
    send(sender, std::move(signal));
}

void Sequence::requestMute()
{
    const int sender = application();
    Message signal = makeSignal(callPath().c_str(), audioInterface, "RequestMute");
    append(signal.get(), DBUS_TYPE_BOOLEAN, dbus_bool_t(m_bytes.below(2)));
    send(sender, std::move(signal));
}

void Sequence::requestRoute()
{
    const int sender = application();
    Message signal = makeSignal(callPath().c_str(), audioInterface, "RequestAudioRoute");
    m_values.appendArguments(signal.get(), "ss");
    send(sender, std::move(signal));
}

void Sequence::answerRequest()
{
    const int asked = application();
    const Message request = m_stage.takeRequest(asked);
    if (!request)
        return;
    const unsigned kind = m_bytes.below(8);
    if (kind == 6) {
        m_stage.send(asked, Message(dbus_message_new_error(request.get(), "x.y.Error", "no")));
        return;
    }
    Message reply(dbus_message_new_method_return(request.get()));
    if (kind == 7)
        m_values.appendArguments(reply.get());
    else
        appendSnapshot(reply.get());
    if (kind == 5)
        m_values.appendArguments(reply.get());
    if (kind == 4)
        m_stage.send(asked, Message(dbus_message_copy(reply.get())));
    m_stage.send(asked, std::move(reply));
}

void Sequence::sendOddSignal()
{
    const int sender = application();
    const Member &member = m_bytes.oneOf(signalMembers);
    const std::string path = m_bytes.oneIn(2) ? managerPath() : callPath();
    Message signal = makeSignal(path.c_str(), member.interface, member.member);
    appendUsualOrOdd(signal.get(), member.signature);
    send(sender, std::move(signal));
}

void Sequence::callPlugin()
{
    const int caller = application();
    const Member &method = m_bytes.oneOf(methods);
    const char *path = m_bytes.oneIn(8) ? m_bytes.oneOf(objectPaths) : servicePath;
    Message call = makeCall(m_stage.hostName().c_str(), path, method.interface, method.member);
    appendUsualOrOdd(call.get(), method.signature);
    dbus_message_set_no_reply(call.get(), m_bytes.oneIn(8));
    send(caller, std::move(call));
}

/** An answer to nothing that is on its way. */
void Sequence::sendStrayReply()
{
    const int sender = application();
    Message reply(dbus_message_new(m_bytes.oneIn(2) ? DBUS_MESSAGE_TYPE_ERROR : DBUS_MESSAGE_TYPE_METHOD_RETURN));
    if (dbus_message_get_type(reply.get()) == DBUS_MESSAGE_TYPE_ERROR)
        dbus_message_set_error_name(reply.get(), "x.y.Error");
    dbus_message_set_reply_serial(reply.get(), 0x80000000U + unsigned(m_bytes.number(2)));
    dbus_message_set_destination(reply.get(), m_stage.hostName().c_str());
    dbus_message_set_no_reply(reply.get(), TRUE);
    m_values.appendArguments(reply.get());
    m_stage.send(sender, std::move(reply));
}

void Sequence::leave() { m_stage.leave(application()); }

// --- Host and bus daemon

void Sequence::act(HostStep::Kind kind)
{
    HostStep step{kind};
    step.target = m_bytes.byte();
    step.text = m_values.text();
    m_stage.act(step);
}

void Sequence::command() { act(m_bytes.oneOf(commands)); }

void Sequence::changeAudio() { act(m_bytes.oneOf(audioChanges)); }

void Sequence::control() { m_stage.act({m_bytes.oneOf(controls)}); }

void Sequence::announceOwner()
{
    const std::string own = m_stage.name(application());
    const std::string names[] = {own, "org.example.App", ":1.999999", m_stage.hostName(), "", "org.freedesktop.DBus"};
    const std::string &name = m_bytes.oneOf(names);
    m_stage.announceOwner(name, m_bytes.oneOf(names), m_bytes.oneOf(names));
}

void Sequence::distort()
{
    const Query query = m_bytes.oneIn(4) ? Query::NameOwner : Query::ProcessId;
    m_stage.distort(query, m_bytes.oneOf(distortions));
}

void Sequence::settle() { m_stage.settle(); }

// --- Values

void Sequence::appendUsualOrOdd(DBusMessage *message, const char *signature)
{
    if (m_bytes.oneIn(2))
        m_values.appendArguments(message);
    else
        m_values.appendArguments(message, signature);
}

unsigned Sequence::few(unsigned limit) { return m_bytes.oneIn(32) ? m_bytes.below(100) : m_bytes.below(limit); }

void Sequence::appendSnapshot(DBusMessage *message)
{
    DBusMessageIter to;
    dbus_message_iter_init_append(message, &to);
    appendContainer(&to, DBUS_TYPE_ARRAY, "{oa{sa{sv}}}", [this](DBusMessageIter *objects) {
        for (unsigned count = few(4); count > 0; --count)
            appendContainer(objects, DBUS_TYPE_DICT_ENTRY, nullptr, [this](DBusMessageIter *object) {
                const std::string path = callPath();
                const char *data = path.c_str();
                dbus_message_iter_append_basic(object, DBUS_TYPE_OBJECT_PATH, &data);
                appendInterfaces(object, 2);
            });
    });
}

void Sequence::appendInterfaces(DBusMessageIter *to, int depth)
{
    appendContainer(to, DBUS_TYPE_ARRAY, "{sa{sv}}", [=](DBusMessageIter *interfaces) {
        for (unsigned count = few(4); count > 0; --count)
            appendContainer(interfaces, DBUS_TYPE_DICT_ENTRY, nullptr, [=](DBusMessageIter *interface) {
                const char *name = interfaceName();
                dbus_message_iter_append_basic(interface, DBUS_TYPE_STRING, &name);
                appendProperties(interface, depth + 2);
            });
    });
}

/** Of their usual types three times of four. */
void Sequence::appendProperties(DBusMessageIter *to, int depth)
{
    appendContainer(to, DBUS_TYPE_ARRAY, "{sv}", [=](DBusMessageIter *entries) {
        for (unsigned count = few(6); count > 0; --count)
            appendContainer(entries, DBUS_TYPE_DICT_ENTRY, nullptr, [=](DBusMessageIter *entry) {
                const Property &property = m_bytes.oneOf(properties);
                dbus_message_iter_append_basic(entry, DBUS_TYPE_STRING, &property.name);
                m_values.writeVariant(entry, m_bytes.oneIn(4) ? m_values.type() : property.type, depth + 2);
            });
    });
}

void Sequence::appendNames(DBusMessageIter *to)
{
    appendContainer(to, DBUS_TYPE_ARRAY, "s", [this](DBusMessageIter *names) {
        for (unsigned count = few(4); count > 0; --count) {
            const char *name = interfaceName();
            dbus_message_iter_append_basic(names, DBUS_TYPE_STRING, &name);
        }
    });
}
