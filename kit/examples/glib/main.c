/* SPDX-FileCopyrightText: 2026 The Ringlet Authors
 * SPDX-License-Identifier: BSD-3-Clause
 *
 * One incoming call: ringlet-example-glib [ADDRESS [NAME [BUS-NAME-OF-THE-HOST]]]. Ctrl-C is the far end hanging up.
 */

#include <gio/gio.h>
#include <glib-unix.h>
#include <stdio.h>

#define MANAGER_PATH "/ringlet/example"
#define CALL_PATH MANAGER_PATH "/call1"
#define SERVICE_PATH "/zelkovar/call/service"
#define CALL "zelkovar.Call.Call1"

enum { NOT_YET = 0, ENDED = 1, INCOMING = 3, ACTIVE = 5, HELD = 7 };

/* By these, GLib checks the arguments of a command. */
static const char description[]
    = "<node><interface name='org.freedesktop.DBus.ObjectManager'>"
      "<method name='GetManagedObjects'><arg type='a{oa{sa{sv}}}' direction='out'/></method>"
      "</interface><interface name='zelkovar.Call.Call1'>"
      "<method name='Accept'/>"
      "<method name='Reject'><arg type='u' direction='in'/></method>"
      "<method name='SetHold'><arg type='b' direction='in'/></method>"
      "</interface><interface name='zelkovar.Call.DTMF1'>"
      "<method name='SendDTMF'><arg type='s' direction='in'/></method>"
      "</interface><interface name='zelkovar.Call.AudioControl1'>"
      "<method name='UpdateAudioRouteState'><arg type='a(sibbsa{sv})' direction='in'/>"
      "<arg type='b' direction='in'/><arg type='s' direction='in'/><arg type='s' direction='in'/></method>"
      "<method name='UpdateAudioRoute'>"
      "<arg type='b' direction='in'/><arg type='s' direction='in'/><arg type='s' direction='in'/></method>"
      "</interface></node>";

static const char *address = "sip:caller@example.org", *name = "Caller", *host_name = "org.tarnwickle.voicecall";
static GDBusConnection *bus;
static GDBusNodeInfo *node;
static guint exported[4]; /* the interfaces, in the order above */
static char *host; /* the connection that has the host's name; NULL if none has */
static guint status = NOT_YET;

static void emit(const char *path, const char *interface, const char *signal, GVariant *arguments)
{
    g_dbus_connection_emit_signal(bus, NULL, path, interface, signal, arguments, NULL);
}

static void emit_status(void) { emit(CALL_PATH, CALL, "StatusChanged", g_variant_new("(u)", status)); }

static void change_status(guint from, guint to)
{
    if (status != from)
        return;
    status = to;
    emit_status();
}

/* The final status goes first: behind the removal nobody listens. */
static void end_call(void)
{
    if (status <= ENDED)
        return;
    status = ENDED;
    emit_status();
    emit(MANAGER_PATH, "org.freedesktop.DBus.ObjectManager", "InterfacesRemoved",
        g_variant_new_parsed("(%o, [%s, 'zelkovar.Call.DTMF1', 'zelkovar.Call.AudioControl1'])", CALL_PATH, CALL));
    for (int i = 1; i < 4; ++i)
        g_dbus_connection_unregister_object(bus, exported[i]);
}

static GVariant *call_interfaces(void)
{
    return g_variant_new_parsed("{%s: {'Incoming': <true>, 'Status': <%u>, 'Holdable': <true>, 'RemoteName': <%s>,"
                                " 'Uri': <%s>}, 'zelkovar.Call.DTMF1': {}, 'zelkovar.Call.AudioControl1': {}}",
        CALL, status, name, address);
}

static GVariant *managed_objects(void)
{
    return status > ENDED ? g_variant_new_parsed("({%o: %@a{sa{sv}}},)", CALL_PATH, call_interfaces())
                          : g_variant_new_parsed("(@a{oa{sa{sv}}} {},)");
}

static void obey(const char *method, GVariant *arguments)
{
    gboolean hold;
    g_autofree char *text = g_variant_print(arguments, FALSE);
    printf("%s%s\n", method, text);
    if (g_str_equal(method, "Accept")) {
        change_status(INCOMING, ACTIVE);
    } else if (g_str_equal(method, "Reject")) {
        end_call();
    } else if (g_str_equal(method, "SetHold")) {
        g_variant_get(arguments, "(b)", &hold);
        change_status(hold ? ACTIVE : HELD, hold ? HELD : ACTIVE);
    }
}

/* Anybody on the bus can call; only the host is obeyed. */
static void on_call(GDBusConnection *connection, const char *sender, const char *path, const char *interface,
    const char *method, GVariant *arguments, GDBusMethodInvocation *invocation, gpointer data)
{
    if (g_str_equal(method, "GetManagedObjects")) {
        g_dbus_method_invocation_return_value(invocation, managed_objects());
    } else if (g_strcmp0(sender, host) != 0) {
        g_dbus_method_invocation_return_error_literal(
            invocation, G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED, "only the host commands calls");
    } else {
        obey(method, arguments);
        g_dbus_method_invocation_return_value(invocation, NULL);
    }
}

static void export(int index, const char *path)
{
    static const GDBusInterfaceVTable handlers = {.method_call = on_call};
    exported[index]
        = g_dbus_connection_register_object(bus, path, node->interfaces[index], &handlers, NULL, NULL, NULL);
}

/* Only when it is registered may the call be announced. Before, it would be reported twice: by its announcement,
 * and in the answer to GetManagedObjects. A call that is up already is told by that answer. */
static void on_registered(GObject *source, GAsyncResult *result, gpointer data)
{
    g_autoptr(GVariant) reply = g_dbus_connection_call_finish(bus, result, NULL);
    if (!reply || status != NOT_YET)
        return;
    status = INCOMING;
    for (int i = 1; i < 4; ++i)
        export(i, CALL_PATH);
    emit(MANAGER_PATH, "org.freedesktop.DBus.ObjectManager", "InterfacesAdded",
        g_variant_new_parsed("(%o, %@a{sa{sv}})", CALL_PATH, call_interfaces()));
}

static void on_host_appeared(GDBusConnection *connection, const char *watched, const char *owner, gpointer data)
{
    host = g_strdup(owner);
    g_dbus_connection_call(bus, host, SERVICE_PATH, "zelkovar.Call.Service1", "RegisterCallManager",
        g_variant_new("(o)", MANAGER_PATH), NULL, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, NULL, on_registered, NULL);
}

static void on_host_vanished(GDBusConnection *connection, const char *watched, gpointer data)
{
    g_clear_pointer(&host, g_free);
}

/* The host shows the call, and only since then listens to its status: tell it again if it has changed. */
static void on_shown(GDBusConnection *connection, const char *sender, const char *path, const char *interface,
    const char *signal, GVariant *arguments, gpointer data)
{
    const char *shown_path;
    g_autoptr(GVariant) interfaces = NULL;
    g_autoptr(GVariant) properties = NULL;
    guint shown;
    if (g_strcmp0(sender, host) != 0 || !g_variant_is_of_type(arguments, G_VARIANT_TYPE("(soa{sa{sv}})")))
        return;
    g_variant_get(arguments, "(&s&o@a{sa{sv}})", NULL, &shown_path, &interfaces);
    properties = g_variant_lookup_value(interfaces, CALL, G_VARIANT_TYPE_VARDICT);
    if (status > ENDED && g_str_equal(shown_path, CALL_PATH) && properties
        && g_variant_lookup(properties, "Status", "u", &shown) && shown != status)
        emit_status();
}

static gboolean on_interrupt(gpointer loop)
{
    g_main_loop_quit(loop);
    return G_SOURCE_CONTINUE;
}

int main(int argc, char *argv[])
{
    GMainLoop *loop = g_main_loop_new(NULL, FALSE);
    GError *error = NULL;
    address = argc > 1 ? argv[1] : address;
    name = argc > 2 ? argv[2] : name;
    host_name = argc > 3 ? argv[3] : host_name;
    setvbuf(stdout, NULL, _IOLBF, 0);
    bus = g_bus_get_sync(G_BUS_TYPE_SESSION, NULL, &error); /* which ends the program when the bus goes */
    if (!bus)
        g_error("%s", error->message);
    node = g_dbus_node_info_new_for_xml(description, NULL);
    export(0, MANAGER_PATH);
    g_dbus_connection_signal_subscribe(bus, NULL, "zelkovar.Call.ServiceManager1", "InterfacesAdded", SERVICE_PATH,
        g_dbus_connection_get_unique_name(bus), G_DBUS_SIGNAL_FLAGS_NONE, on_shown, NULL, NULL);
    g_bus_watch_name_on_connection(
        bus, host_name, G_BUS_NAME_WATCHER_FLAGS_NONE, on_host_appeared, on_host_vanished, NULL, NULL);
    g_unix_signal_add(SIGINT, on_interrupt, loop);
    g_main_loop_run(loop);
    end_call();
    g_dbus_connection_flush_sync(bus, NULL, NULL);
    return 0;
}
