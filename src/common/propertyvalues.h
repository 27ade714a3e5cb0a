// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLET_PROPERTYVALUES_H
#define RINGLET_PROPERTYVALUES_H

#include "common/dbustypes.h"

/**
 * What may be kept of an application's properties, and what may be sent on.
 *
 * The bus layer decodes simple values only. A value of a container type stays unread: it holds on to its
 * whole message, and a file descriptor stays open as long as its value lives. An application that sent
 * enough of either would starve the host's bus connection.
 */
namespace PropertyValues {

/** A copy that holds neither a message nor a file descriptor; a value that would is invalid in it. */
QVariantMap selfContained(const QVariantMap &properties);

/**
 * The same interfaces, fit to be sent on: unchanged, but for properties with a file descriptor inside a
 * container. Those are left out, because the bus layer loses an open descriptor for each that it copies
 * from one message to another, and a host without free descriptors loses its bus connection.
 */
QVariantMapMap relayable(const QVariantMapMap &interfaces);

} // namespace PropertyValues

#endif
