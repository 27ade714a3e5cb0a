// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BUSSERVER_INTROSPECTABLEINTERFACE_H
#define BUSSERVER_INTROSPECTABLEINTERFACE_H

#include "businterface.h"

class BusTree;

/** org.freedesktop.DBus.Introspectable: the descriptions of an object's interfaces, and its children. */
class IntrospectableInterface : public BusInterface
{
    Q_OBJECT

public:
    explicit IntrospectableInterface(const BusTree *tree);
};

#endif
