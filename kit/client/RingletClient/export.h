// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef RINGLETCLIENT_EXPORT_H
#define RINGLETCLIENT_EXPORT_H

#include <QtCore/qglobal.h>

#ifdef RINGLETCLIENT_LIBRARY
#define RINGLETCLIENT_EXPORT Q_DECL_EXPORT
#else
#define RINGLETCLIENT_EXPORT Q_DECL_IMPORT
#endif

#endif
