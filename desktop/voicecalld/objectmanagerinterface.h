// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_OBJECTMANAGERINTERFACE_H
#define VOICECALLD_OBJECTMANAGERINTERFACE_H

#include "businterface.h"

class BusTree;

/** org.freedesktop.DBus.ObjectManager of the host's own object: it lists the calls. */
class ObjectManagerInterface : public BusInterface
{
    Q_OBJECT

public:
    explicit ObjectManagerInterface(const BusTree *tree);

    QDBusMessage call(const QDBusMessage &message) override;

private:
    const BusTree *m_tree;
};

#endif
