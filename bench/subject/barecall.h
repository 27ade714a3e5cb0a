// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BENCH_BARECALL_H
#define BENCH_BARECALL_H

#include "audiocontrolproxy.h"
#include "callproxy.h"
#include "dtmfproxy.h"

#include <QtCore/QScopedPointer>
#include <common/dbustypes.h>

/** The proxies of one call, what it was reported with, and nothing that is done with them. */
class BareCall : public QObject
{
    Q_OBJECT

public:
    BareCall(const QString &service, const QString &path, const QVariantMapMap &interfaces);

    bool isFlood() const;
    const QVariantMapMap &interfaces() const { return m_interfaces; }

    QScopedPointer<CallProxy> callProxy;
    QScopedPointer<DTMFProxy> dtmfProxy;
    QScopedPointer<AudioControlProxy> audioControlProxy;

Q_SIGNALS:
    void statusChanged(uint status);

private Q_SLOTS:
    void ignoreMute(bool) { }
    void ignoreRoute(const QString &, const QString &) { }

private:
    QVariantMapMap m_interfaces;
};

#endif
