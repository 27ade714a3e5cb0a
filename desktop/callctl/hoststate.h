// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_HOSTSTATE_H
#define CALLCTL_HOSTSTATE_H

#include <QtCore/QList>
#include <QtCore/QMetaType>
#include <QtCore/QString>
#include <QtCore/QVariantMap>
#include <QtDBus/QDBusArgument>

/** (ss) */
struct Provider
{
    QString id;
    QString type;
};
using ProviderList = QList<Provider>;

/** (sibbsa{sv}) */
struct AudioDevice
{
    QString id;
    int type = 0;
    bool isInput = false;
    bool isOutput = false;
    QString name;
    QVariantMap properties;

    /** The kind of device in a word. */
    QString typeText() const;
};
using AudioDeviceList = QList<AudioDevice>;

/** The properties of org.tarnwickle.voicecall.Call1 by their names. */
struct CallInfo
{
    QString path;
    QVariantMap properties;

    QString text(const char *property) const { return properties.value(QLatin1String(property)).toString(); }
    bool flag(const char *property) const { return properties.value(QLatin1String(property)).toBool(); }

    QString id() const { return text("HandlerId"); }
    QString status() const { return text("StatusText"); }
    QString direction() const;
    int duration() const { return properties.value(QStringLiteral("Duration")).toInt(); }
};

/** All that the host shows at one moment. */
struct HostState
{
    /** Whether there is a host; nothing else is set without. */
    bool isPresent = false;
    /** In the order of their ids: as they came. */
    QList<CallInfo> calls;
    ProviderList providers;
    AudioDeviceList devices;
    QString inputDevice;
    QString outputDevice;
    bool microphoneMuted = false;

    /** Null when there is none of this id; valid until the calls change. */
    const CallInfo *call(const QString &id) const;

    /** Adds a call, or replaces the one at the same path. */
    void setCall(const CallInfo &call);
    void removeCall(const QString &path);
};

bool operator==(const Provider &left, const Provider &right);
bool operator==(const AudioDevice &left, const AudioDevice &right);

QDBusArgument &operator<<(QDBusArgument &argument, const Provider &provider);
const QDBusArgument &operator>>(const QDBusArgument &argument, Provider &provider);
QDBusArgument &operator<<(QDBusArgument &argument, const AudioDevice &device);
const QDBusArgument &operator>>(const QDBusArgument &argument, AudioDevice &device);

Q_DECLARE_METATYPE(Provider)
Q_DECLARE_METATYPE(ProviderList)
Q_DECLARE_METATYPE(AudioDevice)
Q_DECLARE_METATYPE(AudioDeviceList)

#endif
