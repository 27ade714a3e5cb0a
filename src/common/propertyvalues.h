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
 * The same interfaces, fit to be sent on: unchanged, but for properties that the bus layer cannot copy from one
 * message to another. Those are left out. With a file descriptor inside a container it loses an open descriptor
 * for each copy, and a host without free descriptors loses its bus connection; a message with an empty signature
 * as a value it refuses to send at all.
 */
QVariantMapMap relayable(const QVariantMapMap &interfaces);

} // namespace PropertyValues

#endif
