// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "objectwatch.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QHash>
#include <QtCore/QThread>
#include <QtCore/QVector>

extern Q_CORE_EXPORT quintptr qtHookData[];

namespace {

// Positions in the table.
constexpr int objectAdded = 3;
constexpr int objectRemoved = 4;

QVector<QObject *> objects;
// An object's class is known only between its construction and its destruction.
QHash<QObject *, QString> classNames;
QStringList destroyedClasses;

bool isOnMainThread() { return QThread::currentThread() == QCoreApplication::instance()->thread(); }

void added(QObject *object)
{
    if (isOnMainThread())
        objects.append(object);
}

void removed(QObject *object)
{
    if (!isOnMainThread() || !objects.removeOne(object))
        return;
    if (classNames.contains(object))
        destroyedClasses.append(classNames.take(object));
}

QStringList endingIn(const QString &suffix, const QStringList &names)
{
    QStringList found;
    for (const QString &name : names) {
        if (name.endsWith(suffix))
            found.append(name);
    }
    return found;
}

} // namespace

ObjectWatch::ObjectWatch()
{
    objects.clear();
    classNames.clear();
    destroyedClasses.clear();
    qtHookData[objectAdded] = reinterpret_cast<quintptr>(&added);
    qtHookData[objectRemoved] = reinterpret_cast<quintptr>(&removed);
}

ObjectWatch::~ObjectWatch()
{
    qtHookData[objectAdded] = 0;
    qtHookData[objectRemoved] = 0;
}

QStringList ObjectWatch::living(const QString &suffix)
{
    QStringList names;
    for (QObject *object : qAsConst(objects)) {
        classNames.insert(object, QString::fromLatin1(object->metaObject()->className()));
        names.append(classNames.value(object));
    }
    return endingIn(suffix, names);
}

QStringList ObjectWatch::destroyed(const QString &suffix) const { return endingIn(suffix, destroyedClasses); }
