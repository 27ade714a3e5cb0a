// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "businterface.h"

BusInterface::BusInterface(const QString &name) : m_name(name), m_description(InterfaceDescription::of(name)) { }
