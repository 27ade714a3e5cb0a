// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_MANAGERINTERFACE_H
#define VOICECALLD_MANAGERINTERFACE_H

#include "busserver/businterface.h"

class VoiceCallManager;

/** org.tarnwickle.voicecall.Manager1 */
class ManagerInterface : public BusInterface
{
    Q_OBJECT

public:
    explicit ManagerInterface(VoiceCallManager *manager);

    QVariantMap properties() const override;

private:
    void tell(const QString &change, const QVariantList &arguments);
    QDBusMessage dial(const QDBusMessage &message) const;
    QString noSuchProvider(const QString &id) const;

    VoiceCallManager *m_manager;
};

#endif
