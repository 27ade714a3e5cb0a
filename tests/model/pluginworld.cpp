// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "pluginworld.h"

#include "plugin/callproviderfactory.h"

#include <QtCore/QCoreApplication>
#include <QtDBus/QDBusConnection>
#include <algorithm>
#include <regex>
#include <stdexcept>

static const char servicePath[] = "/zelkovar/call/service";
static const char serviceInterface[] = "zelkovar.Call.Service1";
static const char managerInterface[] = "zelkovar.Call.ServiceManager1";
static const char objectManagerInterface[] = "org.freedesktop.DBus.ObjectManager";

// Never sends anything but what settles.
static BusPeer &bystander()
{
    static BusPeer peer;
    return peer;
}

PluginWorld::PluginWorld(BusMonitor &monitor)
    : m_monitor(monitor),
      m_pluginName(QDBusConnection::sessionBus().baseService().toStdString()),
      m_host(new ObservedHost([this](const QString &name) { return m_names[name.toStdString()]; })),
      m_otherHost(new ObservedHost([](const QString &name) { return name.toStdString(); })),
      m_factory(new CallProviderFactory),
      m_last(&bystander())
{
    m_monitor.forgetNames();
    if (!m_factory->initialize())
        throw std::runtime_error("the plug-in cannot be initialised");
    settle();
    m_monitor.takeLines();
}

PluginWorld::~PluginWorld() = default;

const std::map<StepKind, PluginWorld::Action> &PluginWorld::actions()
{
    static const std::map<StepKind, Action> all{
        {StepKind::Configure, &PluginWorld::doConfigure},
        {StepKind::ConfigureWithNull, &PluginWorld::doConfigureWithNull},
        {StepKind::ConfigureAgain, &PluginWorld::doConfigureAgain},
        {StepKind::Start, &PluginWorld::doLifeCycle},
        {StepKind::Suspend, &PluginWorld::doLifeCycle},
        {StepKind::Resume, &PluginWorld::doLifeCycle},
        {StepKind::Finalize, &PluginWorld::doLifeCycle},
        {StepKind::Register, &PluginWorld::doRegister},
        {StepKind::RegisterBadly, &PluginWorld::doRegisterBadly},
        {StepKind::TakeName, &PluginWorld::doTakeName},
        {StepKind::Leave, &PluginWorld::doLeave},
        {StepKind::LeaveHalfWay, &PluginWorld::doLeaveHalfWay},
        {StepKind::ForgeAnswer, &PluginWorld::doForgeAnswer},
        {StepKind::ClaimDeparture, &PluginWorld::doClaimDeparture},
        {StepKind::Answer, &PluginWorld::doAnswer},
        {StepKind::AnswerWithMore, &PluginWorld::doAnswer},
        {StepKind::AnswerBadly, &PluginWorld::doAnswerBadly},
        {StepKind::AnswerWithError, &PluginWorld::doAnswerWithError},
        {StepKind::Add, &PluginWorld::doAdd},
        {StepKind::AddBadly, &PluginWorld::doAddBadly},
        {StepKind::Remove, &PluginWorld::doRemove},
        {StepKind::RemoveBadly, &PluginWorld::doRemoveBadly},
        {StepKind::Status, &PluginWorld::doStatus},
        {StepKind::StatusBadly, &PluginWorld::doStatusBadly},
        {StepKind::RequestMute, &PluginWorld::doRequestMute},
        {StepKind::RequestRoute, &PluginWorld::doRequestRoute},
        {StepKind::RequestBadly, &PluginWorld::doRequestBadly},
        {StepKind::HostDial, &PluginWorld::doDial},
        {StepKind::Mute, &PluginWorld::doMute},
        {StepKind::SelectInput, &PluginWorld::doSelectInput},
        {StepKind::SelectOutput, &PluginWorld::doSelectOutput},
        {StepKind::Devices, &PluginWorld::doDevices},
    };
    return all;
}

void PluginWorld::perform(const Step &step, const std::vector<std::string> &callIds)
{
    if (!isByApplication(step.kind))
        m_last = &bystander();
    const auto action = actions().find(step.kind);
    if (action != actions().end()) {
        (this->*action->second)(step);
        return;
    }
    for (const std::string &id : callIds) {
        AbstractVoiceCallHandler *call = m_host->call(id);
        if (!call || !command(step, *call))
            m_host->note("no call " + id);
    }
}

static Lines callManagers(const std::string &answer)
{
    static const std::regex entry(R"re(\("([^"]*)",([^)]*)\))re");
    Lines lines;
    for (std::sregex_iterator at(answer.begin() + 1, answer.end(), entry), end; at != end; ++at)
        lines.push_back((*at)[1].str() + "@" + (*at)[2].str());
    std::sort(lines.begin(), lines.end());
    return lines;
}

void PluginWorld::settle()
{
    const BusMessage call = callToPlugin(managerInterface, "ListCallManagers");
    m_answer = m_monitor.waitForReply(*m_last, m_last->send(call.get()));
    m_registry = callManagers(m_answer);
    // What the last step left to be deleted goes at the event loop's next turn, and the answer may have come
    // in the same one as the step.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

Lines PluginWorld::end()
{
    m_factory.reset();
    m_last = &bystander();
    settle();
    Lines lines = m_monitor.takeLines();
    const Lines left = m_host->leftOver(true);
    lines.insert(lines.end(), left.begin(), left.end());
    if (m_answer != "error")
        lines.push_back("the service object is still there");
    return lines;
}

BusPeer &PluginWorld::application(char letter)
{
    std::unique_ptr<BusPeer> &peer = m_applications[letter];
    if (!peer) {
        peer = std::make_unique<BusPeer>();
        m_names[peer->name()] = letter + std::to_string(++m_connections[letter]);
        m_monitor.name(peer->name(), m_names[peer->name()]);
    }
    return *peer;
}

void PluginWorld::send(char letter, const BusMessage &message)
{
    m_last = &application(letter);
    m_last->send(message.get());
}

BusMessage PluginWorld::signal(const std::string &path, const char *interface, const char *member)
{
    return busMessage(dbus_message_new_signal(path.c_str(), interface, member));
}

void PluginWorld::sendSignal(char letter, const BusMessage &message)
{
    if (letter == stranger)
        dbus_message_set_destination(message.get(), m_pluginName.c_str());
    send(letter, message);
}

BusMessage PluginWorld::callToPlugin(const char *interface, const char *member) const
{
    return busMessage(dbus_message_new_method_call(m_pluginName.c_str(), servicePath, interface, member));
}

static std::string configured(bool accepted) { return std::string("configured: ") + (accepted ? "true" : "false"); }

void PluginWorld::doConfigure(const Step &) { m_host->note(configured(m_factory->configure(m_host.get()))); }

void PluginWorld::doConfigureWithNull(const Step &) { m_host->note(configured(m_factory->configure(nullptr))); }

void PluginWorld::doConfigureAgain(const Step &) { m_host->note(configured(m_factory->configure(m_otherHost.get()))); }

void PluginWorld::doLifeCycle(const Step &step)
{
    if (step.kind == StepKind::Finalize) {
        m_factory->finalize();
        return;
    }
    const bool accepted = step.kind == StepKind::Start ? m_factory->start()
        : step.kind == StepKind::Suspend               ? m_factory->suspend()
                                                       : m_factory->resume();
    if (!accepted)
        m_host->note("the plug-in refuses to start, suspend or resume");
}

void PluginWorld::doRegister(const Step &step)
{
    const BusMessage call = callToPlugin(serviceInterface, "RegisterCallManager");
    ArgumentWriter(call.get()).path(step.manager);
    send(step.application, call);
}

void PluginWorld::doRegisterBadly(const Step &step)
{
    const BusMessage call = callToPlugin(serviceInterface, "RegisterCallManager");
    ArgumentWriter(call.get()).string(step.manager);
    send(step.application, call);
}

void PluginWorld::doTakeName(const Step &step)
{
    const BusMessage call = busMessage(
        dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "RequestName"));
    ArgumentWriter(call.get()).string(std::string("org.example.") + step.application).number(0);
    send(step.application, call);
}

void PluginWorld::doLeave(const Step &step)
{
    const std::string name = application(step.application).name();
    m_applications.erase(step.application);
    m_last = &bystander();
    m_monitor.waitForDeparture(name);
}

void PluginWorld::doLeaveHalfWay(const Step &step)
{
    const BusMessage message = signal(step.manager, objectManagerInterface, "InterfacesAdded");
    ArgumentWriter(message.get()).path(step.object).interfaces(step.interfaces);
    application(step.application).sendHalf(message.get());
    doLeave(step);
}

void PluginWorld::doForgeAnswer(const Step &step)
{
    const BusMessage reply = snapshotReply(step.text[0], step.manager);
    ArgumentWriter(reply.get()).objects(step.objects);
    send(step.application, reply);
}

void PluginWorld::doClaimDeparture(const Step &step)
{
    const auto claimed = m_applications.find(step.text.empty() ? stranger : step.text[0]);
    const std::string name = claimed == m_applications.end() || !claimed->second ? ":1.0" : claimed->second->name();
    const BusMessage message = signal(DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "NameOwnerChanged");
    ArgumentWriter(message.get()).string(name).string(name).string("");
    dbus_message_set_destination(message.get(), m_pluginName.c_str());
    send(step.application, message);
}

BusMessage PluginWorld::snapshotReply(char letter, const std::string &manager, int type)
{
    BusMessage reply = busMessage(dbus_message_new(type));
    const unsigned serial = m_monitor.snapshotCall(application(letter).name(), manager);
    if (serial == 0)
        throw std::runtime_error("the plug-in has not asked for the objects at " + manager);
    dbus_message_set_reply_serial(reply.get(), serial);
    dbus_message_set_destination(reply.get(), m_pluginName.c_str());
    return reply;
}

void PluginWorld::doAnswer(const Step &step)
{
    const BusMessage reply = snapshotReply(step.application, step.manager);
    ArgumentWriter arguments(reply.get());
    arguments.objects(step.objects);
    if (step.kind == StepKind::AnswerWithMore)
        arguments.string("more");
    send(step.application, reply);
}

void PluginWorld::doAnswerBadly(const Step &step)
{
    const BusMessage reply = snapshotReply(step.application, step.manager);
    if (step.number == 1)
        ArgumentWriter(reply.get()).string("").objects({});
    else if (step.number == 2)
        ArgumentWriter(reply.get()).interfaces({{callInterface, {}}});
    else if (step.number == 3)
        ArgumentWriter(reply.get()).strings({});
    send(step.application, reply);
}

void PluginWorld::doAnswerWithError(const Step &step)
{
    const BusMessage reply = snapshotReply(step.application, step.manager, DBUS_MESSAGE_TYPE_ERROR);
    dbus_message_set_error_name(reply.get(), DBUS_ERROR_UNKNOWN_METHOD);
    ArgumentWriter arguments(reply.get());
    if (step.number % 2 == 0)
        arguments.string("no objects here");
    if (step.number < 3)
        arguments.objects(step.objects);
    else
        arguments.strings({});
    send(step.application, reply);
}

void PluginWorld::doAdd(const Step &step)
{
    const BusMessage message = signal(step.manager, objectManagerInterface, "InterfacesAdded");
    ArgumentWriter(message.get()).path(step.object).interfaces(step.interfaces);
    sendSignal(step.application, message);
}

void PluginWorld::doAddBadly(const Step &step)
{
    const BusMessage message = signal(step.manager, objectManagerInterface, "InterfacesAdded");
    ArgumentWriter(message.get()).path(step.object).interfaces({{callInterface, {}}}).string("more");
    sendSignal(step.application, message);
}

void PluginWorld::doRemove(const Step &step)
{
    const BusMessage message = signal(step.manager, objectManagerInterface, "InterfacesRemoved");
    ArgumentWriter(message.get()).path(step.object).strings(step.names);
    sendSignal(step.application, message);
}

void PluginWorld::doRemoveBadly(const Step &step)
{
    const BusMessage message = signal(step.manager, objectManagerInterface, "InterfacesRemoved");
    ArgumentWriter(message.get()).string(step.object).strings({callInterface});
    sendSignal(step.application, message);
}

void PluginWorld::doStatus(const Step &step)
{
    const BusMessage message = signal(step.object, callInterface, "StatusChanged");
    ArgumentWriter(message.get()).number(step.number);
    sendSignal(step.application, message);
}

void PluginWorld::doStatusBadly(const Step &step)
{
    const BusMessage message = signal(step.object, callInterface, "StatusChanged");
    if (step.number == 1)
        ArgumentWriter(message.get()).signedNumber(5);
    else if (step.number == 2)
        ArgumentWriter(message.get()).string("5");
    else if (step.number == 3)
        ArgumentWriter(message.get()).number(5).string("more");
    sendSignal(step.application, message);
}

void PluginWorld::doRequestMute(const Step &step)
{
    const BusMessage message = signal(step.object, audioInterface, "RequestMute");
    ArgumentWriter(message.get()).boolean(step.on);
    sendSignal(step.application, message);
}

void PluginWorld::doRequestRoute(const Step &step)
{
    const BusMessage message = signal(step.object, audioInterface, "RequestAudioRoute");
    ArgumentWriter(message.get()).string(step.text).string(step.otherText);
    sendSignal(step.application, message);
}

void PluginWorld::doRequestBadly(const Step &step)
{
    const bool route = step.number < 2;
    const BusMessage message = signal(step.object, audioInterface, route ? "RequestAudioRoute" : "RequestMute");
    if (step.number % 2 == 0)
        ArgumentWriter(message.get()).string("mic");
    else
        ArgumentWriter(message.get()).signedNumber(1);
    sendSignal(step.application, message);
}

bool PluginWorld::command(const Step &step, AbstractVoiceCallHandler &call)
{
    const QString text = QString::fromStdString(step.text);
    switch (step.kind) {
    case StepKind::HostAnswer:
        call.answer();
        return true;
    case StepKind::HostHangup:
        call.hangup();
        return true;
    case StepKind::HostHold:
        call.hold(step.on);
        return true;
    case StepKind::HostHoldByName:
        return QMetaObject::invokeMethod(&call, "hold");
    case StepKind::HostDtmf:
        call.sendDtmf(text);
        return true;
    case StepKind::HostDeflect:
        call.deflect(QStringLiteral("sip:eve@example.org"));
        return true;
    case StepKind::HostMerge:
        call.merge(QStringLiteral("h1"));
        return true;
    case StepKind::HostSplit:
        call.split();
        return true;
    default:
        return false;
    }
}

void PluginWorld::doDial(const Step &step)
{
    const std::string name = m_names[application(step.application).name()];
    AbstractVoiceCallProvider *provider = m_host->provider(name + "@" + step.manager);
    m_last = &bystander();
    m_host->note(!provider                          ? "no provider"
            : provider->dial(QStringLiteral("123")) ? "dialled: true"
                                                    : "dialled: false");
}

void PluginWorld::doMute(const Step &step) { m_host->setMuted(step.on); }

void PluginWorld::doSelectInput(const Step &step) { m_host->setInputDevice(QString::fromStdString(step.text)); }

void PluginWorld::doSelectOutput(const Step &step) { m_host->setOutputDevice(QString::fromStdString(step.text)); }

void PluginWorld::doDevices(const Step &step) { m_host->setDevices(step.number); }
