// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_COMMANDINTERFACE_H
#define RINGLETCLIENT_COMMANDINTERFACE_H

#include "busserver/businterface.h"

namespace Ringlet {

class CallObject;
class HostLink;

/** An interface of a call's, by which the host commands it. Only those commands are heard that the host may give. */
class CommandInterface : public BusInterface
{
    Q_OBJECT
public:
    /** Both outlive this object's stay on the bus. */
    CommandInterface(const QString &name, const CallObject &call, const HostLink &host);

    QVariantMap properties() const override;

protected:
    QString refusal(const QDBusMessage &call) const override;
    bool takes(const QString &method, const QStringList &types) const override;

private:
    const CallObject &m_call;
    const HostLink &m_host;
};

} // namespace Ringlet

#endif
