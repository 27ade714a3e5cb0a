// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BARESIP_DEVICEMAP_H
#define BARESIP_DEVICEMAP_H

#include <QtCore/QHash>
#include <QtCore/QStringList>

/** Which of baresip's devices, "driver,device", stands for which of the host's, by its id. */
class DeviceMap
{
public:
    /** Reads "HOST-ID=DRIVER,DEVICE". False when it is none, or when the host's device has been given before. */
    bool add(const QString &pair);

    /** Empty when it has no counterpart. */
    QString value(const QString &hostId) const { return m_devices.value(hostId); }

private:
    QHash<QString, QString> m_devices;
};

#endif
