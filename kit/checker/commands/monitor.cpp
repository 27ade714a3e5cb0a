// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands/monitor.h"

#include "analysis/names.h"

// What concerns calls. Replies cannot be told apart by the bus; those of other programs are passed over here.
static const char *const matches[] = {
    "interface='zelkovar.Call.Service1'",
    "interface='zelkovar.Call.ServiceManager1'",
    "interface='zelkovar.Call.Call1'",
    "interface='zelkovar.Call.DTMF1'",
    "interface='zelkovar.Call.AudioControl1'",
    "interface='org.freedesktop.DBus.ObjectManager'",
    "type='signal',interface='org.freedesktop.DBus.Properties',member='PropertiesChanged'",
    "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',member='NameOwnerChanged'",
    "type='method_call',interface='org.freedesktop.DBus',member='AddMatch'",
    "type='method_call',interface='org.freedesktop.DBus',member='GetConnectionUnixProcessID'",
    "type='method_call',interface='org.freedesktop.DBus',member='GetNameOwner'",
    "type='method_call',member='RegisterCallManager'",
    "type='method_call',path='/zelkovar/call/service'",
    "type='signal',member='StatusChanged'",
    "type='method_return'",
    "type='error'",
};

Monitor::~Monitor()
{
    if (m_connection)
        g_dbus_connection_close_sync(m_connection.get(), nullptr, nullptr);
    if (!m_queue)
        return;
    while (auto *item = static_cast<Item *>(g_async_queue_try_pop(m_queue)))
        delete item;
    g_async_queue_unref(m_queue);
}

// In the bus's own thread. A monitor that answers anything is thrown out, so nothing gets further than here.
GDBusMessage *Monitor::filter(GDBusConnection *, GDBusMessage *message, gboolean isIncoming, gpointer data)
{
    auto *self = static_cast<Monitor *>(data);
    if (!isIncoming)
        return message;
    if (!self->m_isMonitor) {
        // The first reply is that to BecomeMonitor.
        if (g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_RETURN)
            self->m_isMonitor = true;
        return message;
    }
    g_async_queue_push(self->m_queue, new Item{BusMessage(message), now(), ++self->m_count});
    g_main_context_wakeup(nullptr);
    return nullptr;
}

bool Monitor::start(std::string *error)
{
    m_connection = Bus::connect(error);
    if (!m_connection)
        return false;
    m_queue = g_async_queue_new();
    g_dbus_connection_add_filter(m_connection.get(), filter, this, nullptr);
    GVariantBuilder rules;
    g_variant_builder_init(&rules, G_VARIANT_TYPE("as"));
    for (const char *match : matches)
        g_variant_builder_add(&rules, "s", match);
    GError *failure = nullptr;
    GVariant *reply = g_dbus_connection_call_sync(m_connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
        "org.freedesktop.DBus.Monitoring", "BecomeMonitor", g_variant_new("(asu)", &rules, 0U), nullptr,
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &failure);
    if (reply)
        g_variant_unref(reply);
    if (failure) {
        *error = std::string("the bus does not allow to watch it: ") + failure->message;
        g_error_free(failure);
    }
    return reply != nullptr;
}

Monitor::Item Monitor::take()
{
    auto *taken = static_cast<Item *>(g_async_queue_try_pop(m_queue));
    if (!taken)
        return {};
    Item item = std::move(*taken);
    delete taken;
    return item;
}
