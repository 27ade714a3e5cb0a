// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BUSSERVER_OBJECTMANAGERINTERFACE_H
#define BUSSERVER_OBJECTMANAGERINTERFACE_H

#include "businterface.h"

class BusTree;

/** org.freedesktop.DBus.ObjectManager of a tree's root: it lists the objects below. */
class ObjectManagerInterface : public BusInterface
{
    Q_OBJECT

public:
    explicit ObjectManagerInterface(const BusTree *tree);
};

#endif
