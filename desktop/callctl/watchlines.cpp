// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "watchlines.h"

#include "programs/printabletext.h"
#include "watchfields.h"

#include <QtCore/QHash>
#include <cstdio>
#include <utility>

// Bytes that may wait to be read before changes are put together.
static const int mostBytes = 1 << 16;

static QString lineOf(const QString &subject, const char *event, const Fields &fields = {})
{
    QString text = subject + QLatin1Char(' ') + QLatin1String(event);
    for (const Field &field : fields)
        text += QLatin1Char(' ') + field.first + QLatin1Char('=') + field.second;
    return text;
}

template <typename Thing>
static QString changeOf(const QString &subject, const Thing *before, const Thing *after)
{
    if (!after)
        return before ? lineOf(subject, "removed") : QString();
    if (!before)
        return lineOf(subject, "added", WatchFields::all(*after));
    const Fields fields = WatchFields::changed(*before, *after);
    return fields.isEmpty() ? QString() : lineOf(subject, "changed", fields);
}

void WatchLines::print(const QString &line)
{
    if (!line.isEmpty())
        m_bytes += line.toUtf8() + '\n';
}

// --- Providers

void WatchLines::printProvider(const HostState &state, const QString &id)
{
    const Provider *before = m_told.provider(id);
    const Provider *after = state.provider(id);
    if (before && after && *before == *after)
        return;
    const QString subject = QStringLiteral("provider ") + WatchFields::word(id);
    if (before) {
        print(lineOf(subject, "removed"));
        m_told.providers.removeAll(Provider(*before));
    }
    if (after) {
        print(lineOf(subject, "added", {{QStringLiteral("type"), WatchFields::word(after->type)}}));
        m_told.providers.append(*after);
    }
}

// --- Audio

static QHash<QString, AudioDevice> byId(const AudioDeviceList &devices)
{
    QHash<QString, AudioDevice> result;
    for (const AudioDevice &device : devices)
        result.insert(device.id, device);
    return result;
}

static const AudioDevice *find(const QHash<QString, AudioDevice> &devices, const QString &id)
{
    const auto found = devices.constFind(id);
    return found == devices.cend() ? nullptr : &*found;
}

void WatchLines::printAudio(const HostState &state)
{
    const QHash<QString, AudioDevice> before = byId(m_told.devices);
    const QHash<QString, AudioDevice> after = byId(state.devices);
    const auto subject
        = [](const AudioDevice &device) { return QStringLiteral("device ") + WatchFields::word(device.id); };
    for (const AudioDevice &device : qAsConst(m_told.devices)) {
        if (!after.contains(device.id))
            print(lineOf(subject(device), "removed"));
    }
    for (const AudioDevice &device : state.devices)
        print(changeOf(subject(device), find(before, device.id), &device));
    const Fields selection = state.isPresent ? WatchFields::changed(m_told, state) : Fields();
    if (!selection.isEmpty())
        print(lineOf(QStringLiteral("audio"), "changed", selection));
    m_told.devices = state.devices;
    m_told.inputDevice = state.inputDevice;
    m_told.outputDevice = state.outputDevice;
    m_told.microphoneMuted = state.microphoneMuted;
}

// --- Calls

static const CallInfo *find(const QMap<CallPath, CallInfo> &calls, const CallPath &path)
{
    const auto found = calls.constFind(path);
    return found == calls.cend() ? nullptr : &*found;
}

void WatchLines::printCall(const HostState &state, const CallPath &path)
{
    const CallInfo *before = find(m_told.calls, path);
    const CallInfo *after = find(state.calls, path);
    if (!before && !after)
        return;
    print(changeOf(QStringLiteral("call ") + WatchFields::word((after ? after : before)->id()), before, after));
    if (after)
        m_told.calls.insert(path, *after);
    else
        m_told.calls.remove(path);
}

// --- All of it

void WatchLines::noteThingsOf(const HostState &state)
{
    for (const Provider &provider : state.providers) {
        if (!m_providers.contains(provider.id))
            m_providers.append(provider.id);
    }
    for (auto call = state.calls.cbegin(); call != state.calls.cend(); ++call)
        m_calls.insert(call.key(), true);
}

void WatchLines::noteEverything(const HostState &state)
{
    noteThingsOf(m_told);
    noteThingsOf(state);
    m_audio = true;
}

void WatchLines::printNoted(const HostState &state)
{
    for (const QString &id : qAsConst(m_providers))
        printProvider(state, id);
    m_providers.clear();
    if (m_audio)
        printAudio(state);
    m_audio = false;
    for (auto call = m_calls.cbegin(); call != m_calls.cend(); ++call)
        printCall(state, call.key());
    m_calls.clear();
    m_told.isPresent = state.isPresent;
}

void WatchLines::printIfThereIsRoom(const HostState &state)
{
    if (m_bytes.size() >= mostBytes)
        return;
    if (m_isGone) {
        noteEverything({});
        printNoted({});
        print(QStringLiteral("host gone"));
        noteEverything(state);
    }
    m_isGone = false;
    if (!state.isPresent)
        return;
    printNoted(state);
    if (m_isReady)
        print(QStringLiteral("host ready"));
    m_isReady = false;
}

void WatchLines::noteReady(const HostState &state)
{
    m_isReady = true;
    noteEverything(state);
    printIfThereIsRoom(state);
}

void WatchLines::noteCall(const HostState &state, const QString &path)
{
    m_calls.insert({path}, true);
    printIfThereIsRoom(state);
}

void WatchLines::noteProvider(const HostState &state, const QString &id)
{
    if (!m_providers.contains(id))
        m_providers.append(id);
    printIfThereIsRoom(state);
}

void WatchLines::noteAudio(const HostState &state)
{
    m_audio = true;
    printIfThereIsRoom(state);
}

void WatchLines::noteGone()
{
    // Of a host that was never told to be ready there is nothing to tell.
    m_isGone = m_isGone || m_told.isPresent;
    m_isReady = false;
    printIfThereIsRoom({});
}

void WatchLines::noteFailure(const QString &reason)
{
    std::fprintf(stderr, "callctl: %s; waiting for it\n", qUtf8Printable(PrintableText::printable(reason)));
}

QByteArray WatchLines::take(const HostState &state)
{
    QByteArray bytes;
    bytes.swap(m_bytes);
    printIfThereIsRoom(state);
    return bytes + std::exchange(m_bytes, {});
}
