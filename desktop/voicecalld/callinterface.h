// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_CALLINTERFACE_H
#define VOICECALLD_CALLINTERFACE_H

#include "busserver/businterface.h"

#include <QtCore/QPointer>

class Call;

/** org.tarnwickle.voicecall.Call1: passes commands to the call's handler, unjudged. */
class CallInterface : public BusInterface
{
    Q_OBJECT

public:
    explicit CallInterface(Call *call);

    QVariantMap properties() const override;

private:
    QPointer<Call> m_call;
};

#endif
