/* SPDX-FileCopyrightText: 2026 The Ringlet Authors
 * SPDX-License-Identifier: BSD-3-Clause
 *
 * One incoming call that the host can answer, reject, hold, send tones to and route the audio of.
 */

#define _GNU_SOURCE

#include <errno.h>
#include <getopt.h>
#include <locale.h>
#include <signal.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/epoll.h>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>
#include <unistd.h>

#define PROGRAM "ringlet-example-sd-bus"
#define MANAGER_PATH "/ringlet/example"
#define CALL_NAME "call1"
#define CALL_PATH MANAGER_PATH "/" CALL_NAME
#define SERVICE_PATH "/zelkovar/call/service"

enum { STATUS_DISCONNECTED = 1, STATUS_INCOMING = 3, STATUS_ACTIVE = 5, STATUS_HELD = 7 };

/* What the host reads of the call: sd-bus takes the values right out of here. */
typedef struct
{
    int incoming;
    int holdable;
    uint32_t status;
    const char *remote_name;
    const char *address;
    const char *local_name;
    const char *local_handle;
} Call;

typedef struct
{
    sd_event *loop;
    sd_bus *bus;
    Call call;
    sd_bus_slot *interfaces[3]; /* of the call; all NULL before it rings and after it has ended */
    bool has_rung;
    char *host_owner; /* unique name of the host, NULL when there is none */
    const char *host;
    char input[256]; /* what was typed and is no whole line yet */
    size_t typed;
} Example;

/* --- What is printed */

static void end_line(void)
{
    putchar('\n');
    fflush(stdout);
}

static void report(const char *format, ...) __attribute__((format(printf, 1, 2)));

static void report(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
    end_line();
}

/* Text that came over the bus stays on its line, whatever is in it. */
static void print_quoted(const char *before, const char *text)
{
    static const char *const escapes[]
        = {['\n'] = "\\n", ['\r'] = "\\r", ['\t'] = "\\t", ['"'] = "\\\"", ['\\'] = "\\\\"};
    printf("%s\"", before);
    for (; *text; ++text) {
        size_t c = (unsigned char)*text;
        if (c < sizeof escapes / sizeof *escapes && escapes[c])
            fputs(escapes[c], stdout);
        else
            putchar(*text);
    }
    putchar('"');
}

static const char *status_name(uint32_t status)
{
    static const char *const names[]
        = {"disconnected", "disconnected", "dialing", "incoming", "disconnected", "active", "active", "held"};
    return status < sizeof names / sizeof *names ? names[status] : "unknown";
}

static int check(int result, const char *what)
{
    if (result < 0)
        fprintf(stderr, PROGRAM ": %s: %s\n", what, strerror(-result));
    return result;
}

/* --- The call */

static bool is_up(const Example *example) { return example->interfaces[0]; }

static void send_status(Example *example)
{
    sd_bus_emit_signal(example->bus, CALL_PATH, "zelkovar.Call.Call1", "StatusChanged", "u", example->call.status);
}

static void set_status(Example *example, uint32_t status)
{
    if (example->call.status == status)
        return;
    example->call.status = status;
    report(CALL_NAME " status %u %s", status, status_name(status));
    send_status(example);
}

/* The final status goes out before the interfaces do: behind them nobody listens any more. */
static void end_call(Example *example)
{
    if (!is_up(example))
        return;
    set_status(example, STATUS_DISCONNECTED);
    report(CALL_NAME " removed");
    /* sd-bus lists what is to be removed, so it has to be there still. */
    sd_bus_emit_object_removed(example->bus, CALL_PATH);
    for (size_t i = 0; i < 3; ++i)
        example->interfaces[i] = sd_bus_slot_unref(example->interfaces[i]);
}

static int on_accept(sd_bus_message *message, void *data, sd_bus_error *error)
{
    Example *example = data;
    (void)error;
    report(CALL_NAME " command accept");
    if (example->call.status == STATUS_INCOMING)
        set_status(example, STATUS_ACTIVE);
    return sd_bus_reply_method_return(message, "");
}

static int on_reject(sd_bus_message *message, void *data, sd_bus_error *error)
{
    uint32_t reason;
    int result = sd_bus_message_read(message, "u", &reason);
    (void)error;
    if (result < 0)
        return result;
    report(CALL_NAME " command reject %u", reason);
    result = sd_bus_reply_method_return(message, "");
    end_call(data);
    return result;
}

static int on_set_hold(sd_bus_message *message, void *data, sd_bus_error *error)
{
    Example *example = data;
    int hold;
    int result = sd_bus_message_read(message, "b", &hold);
    (void)error;
    if (result < 0)
        return result;
    report(CALL_NAME " command hold %s", hold ? "on" : "off");
    if (example->call.status == (hold ? STATUS_ACTIVE : STATUS_HELD))
        set_status(example, hold ? STATUS_HELD : STATUS_ACTIVE);
    return sd_bus_reply_method_return(message, "");
}

static int on_send_dtmf(sd_bus_message *message, void *data, sd_bus_error *error)
{
    const char *tones;
    int result = sd_bus_message_read(message, "s", &tones);
    (void)data;
    (void)error;
    if (result < 0)
        return result;
    print_quoted(CALL_NAME " command tones ", tones);
    end_line();
    return sd_bus_reply_method_return(message, "");
}

/* Mute and the selected devices, which both updates end with. */
static int print_route(sd_bus_message *message, const char *event)
{
    int muted;
    const char *input;
    const char *output;
    int result = sd_bus_message_read(message, "bss", &muted, &input, &output);
    if (result < 0)
        return result;
    printf(CALL_NAME " %s muted=%s", event, muted ? "yes" : "no");
    print_quoted(" input=", input);
    print_quoted(" output=", output);
    return 0;
}

static int on_audio_route(sd_bus_message *message, void *data, sd_bus_error *error)
{
    int result = print_route(message, "audio-route");
    (void)data;
    (void)error;
    if (result < 0)
        return result;
    end_line();
    return sd_bus_reply_method_return(message, "");
}

/* Goes through the devices, printing their ids if asked to; how many there are. */
static int read_devices(sd_bus_message *message, bool print)
{
    const char *id;
    int count = 0;
    int result = sd_bus_message_enter_container(message, 'a', "(sibbsa{sv})");
    while (result >= 0 && (result = sd_bus_message_enter_container(message, 'r', "sibbsa{sv}")) > 0) {
        result = sd_bus_message_read(message, "s", &id);
        if (result >= 0)
            result = sd_bus_message_skip(message, "ibbsa{sv}");
        if (result >= 0)
            result = sd_bus_message_exit_container(message);
        if (print)
            print_quoted(" ", id);
        ++count;
    }
    if (result >= 0)
        result = sd_bus_message_exit_container(message);
    return result < 0 ? result : count;
}

static int on_audio_state(sd_bus_message *message, void *data, sd_bus_error *error)
{
    int count = read_devices(message, false);
    int result = count < 0 ? count : print_route(message, "audio-state");
    (void)data;
    (void)error;
    if (result < 0)
        return result;
    printf(" devices=%d", count);
    /* The ids stand at the end of the line, and at the beginning of the message. */
    sd_bus_message_rewind(message, true);
    read_devices(message, true);
    end_line();
    return sd_bus_reply_method_return(message, "");
}

#define CALL_PROPERTY(name, type, member) SD_BUS_PROPERTY(name, type, NULL, offsetof(Example, call.member), 0)

static const sd_bus_vtable call_interface[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Accept", "", "", on_accept, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Reject", "u", "", on_reject, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("SetHold", "b", "", on_set_hold, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("StatusChanged", "u", 0),
    CALL_PROPERTY("Holdable", "b", holdable),
    CALL_PROPERTY("Incoming", "b", incoming),
    CALL_PROPERTY("LocalHandle", "s", local_handle),
    CALL_PROPERTY("LocalName", "s", local_name),
    CALL_PROPERTY("RemoteHandle", "s", address),
    CALL_PROPERTY("RemoteName", "s", remote_name),
    CALL_PROPERTY("Status", "u", status),
    CALL_PROPERTY("Uri", "s", address),
    SD_BUS_VTABLE_END,
};

static const sd_bus_vtable dtmf_interface[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("SendDTMF", "s", "", on_send_dtmf, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

static const sd_bus_vtable audio_interface[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("UpdateAudioRoute", "bss", "", on_audio_route, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("UpdateAudioRouteState", "a(sibbsa{sv})bss", "", on_audio_state, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("RequestAudioRoute", "ss", 0),
    SD_BUS_SIGNAL("RequestMute", "b", 0),
    SD_BUS_VTABLE_END,
};

/* The object is announced when it is complete, with all its interfaces at once. */
static void ring(Example *example)
{
    static const struct
    {
        const char *name;
        const sd_bus_vtable *members;
    } interfaces[] = {
        {"zelkovar.Call.Call1", call_interface},
        {"zelkovar.Call.DTMF1", dtmf_interface},
        {"zelkovar.Call.AudioControl1", audio_interface},
    };

    for (size_t i = 0; i < 3; ++i)
        check(sd_bus_add_object_vtable(
                  example->bus, &example->interfaces[i], CALL_PATH, interfaces[i].name, interfaces[i].members, example),
            interfaces[i].name);
    example->has_rung = true;
    report(CALL_NAME " announced %d incoming", STATUS_INCOMING);
    check(sd_bus_emit_object_added(example->bus, CALL_PATH), "announcing the call");
}

/* --- The host */

/* Reads an a{sv}: 1 if it has a Status that is a number, 0 if not. */
static int read_status(sd_bus_message *message, uint32_t *status)
{
    int found = 0;
    int result = sd_bus_message_enter_container(message, 'a', "{sv}");
    while (result >= 0 && (result = sd_bus_message_enter_container(message, 'e', "sv")) > 0) {
        const char *name;
        const char *type;
        sd_bus_message_read(message, "s", &name);
        sd_bus_message_peek_type(message, NULL, &type);
        if (strcmp(name, "Status") == 0 && strcmp(type, "u") == 0)
            found = sd_bus_message_read(message, "v", "u", status) > 0;
        else
            sd_bus_message_skip(message, "v");
        result = sd_bus_message_exit_container(message);
    }
    return found;
}

/* Reads an a{sa{sv}}: 1 if it tells the status of a call, 0 if not. */
static int read_shown_status(sd_bus_message *message, uint32_t *status)
{
    int found = 0;
    int result = sd_bus_message_enter_container(message, 'a', "{sa{sv}}");
    while (!found && result >= 0 && (result = sd_bus_message_enter_container(message, 'e', "sa{sv}")) > 0) {
        const char *interface;
        sd_bus_message_read(message, "s", &interface);
        if (strcmp(interface, "zelkovar.Call.Call1") == 0)
            return read_status(message, status);
        sd_bus_message_skip(message, "a{sv}");
        result = sd_bus_message_exit_container(message);
    }
    return found;
}

/* The host tells that it shows the call. It listens to the status only since then, and never asks for it:
 * if it has changed meanwhile, the host must be told again. */
static int on_shown(sd_bus_message *message, void *data, sd_bus_error *error)
{
    Example *example = data;
    const char *path;
    uint32_t shown;

    (void)error;
    if (!is_up(example) || !example->host_owner || strcmp(sd_bus_message_get_sender(message), example->host_owner) != 0
        || !sd_bus_message_has_signature(message, "soa{sa{sv}}"))
        return 0;
    sd_bus_message_read(message, "so", NULL, &path);
    if (strcmp(path, CALL_PATH) != 0 || !read_shown_status(message, &shown))
        return 0;
    report(CALL_NAME " shown %u %s", shown, status_name(shown));
    if (shown != example->call.status) {
        report(CALL_NAME " status %u %s again", example->call.status, status_name(example->call.status));
        send_status(example);
    }
    return 0;
}

/* Only now may the call be announced. Before, it would be reported twice: by its announcement, and again
 * in what the host asks for during the registration. A call that is there already is told by the latter. */
static int on_registered(sd_bus_message *reply, void *data, sd_bus_error *unused)
{
    Example *example = data;
    const sd_bus_error *error = sd_bus_message_get_error(reply);

    (void)unused;
    if (error) {
        printf("refused " MANAGER_PATH " %s", error->name);
        print_quoted(" ", error->message);
        end_line();
    } else {
        report("registered " MANAGER_PATH);
        if (!example->has_rung)
            ring(example);
    }
    return 0;
}

static void on_host_appeared(Example *example, const char *owner)
{
    example->host_owner = strdup(owner);
    report("host appeared %s", owner);
    check(sd_bus_call_method_async(example->bus, NULL, owner, SERVICE_PATH, "zelkovar.Call.Service1",
              "RegisterCallManager", on_registered, example, "o", MANAGER_PATH),
        "registering");
}

static void on_host_gone(Example *example)
{
    free(example->host_owner);
    example->host_owner = NULL;
    report("host gone");
}

static int on_owner_changed(sd_bus_message *message, void *data, sd_bus_error *error)
{
    Example *example = data;
    const char *owner;

    (void)error;
    if (sd_bus_message_read(message, "sss", NULL, NULL, &owner) < 0)
        return 0;
    if (example->host_owner)
        on_host_gone(example);
    if (*owner)
        on_host_appeared(example, owner);
    else
        report("waiting for host %s", example->host);
    return 0;
}

/* Who has the host's name at the start. If that changes meanwhile, the bus has told of it before. */
static int on_owner(sd_bus_message *reply, void *data, sd_bus_error *error)
{
    Example *example = data;
    const char *owner;

    (void)error;
    if (sd_bus_message_is_method_error(reply, NULL) || sd_bus_message_read(reply, "s", &owner) < 0)
        report("waiting for host %s", example->host);
    else if (!example->host_owner)
        on_host_appeared(example, owner);
    return 0;
}

static int on_bus_closed(sd_bus_message *message, void *data, sd_bus_error *error)
{
    (void)message;
    (void)error;
    fputs(PROGRAM ": the session bus has gone\n", stderr);
    return sd_event_exit(((Example *)data)->loop, 3);
}

static int watch(Example *example, sd_bus_message_handler_t handler, const char *format, const char *argument)
{
    char *rule;
    int result = asprintf(&rule, format, argument);
    if (result < 0)
        return -ENOMEM;
    result = sd_bus_add_match(example->bus, NULL, rule, handler, example);
    free(rule);
    return result;
}

static int look_for_host(Example *example)
{
    const char *own_name;
    int result = sd_bus_get_unique_name(example->bus, &own_name);
    if (result < 0)
        return result;
    report("connected %s", own_name);
    result = watch(example, on_shown,
        "type='signal',path='" SERVICE_PATH "',interface='zelkovar.Call.ServiceManager1',"
        "member='InterfacesAdded',arg0='%s'",
        own_name);
    if (result >= 0)
        result = watch(example, on_owner_changed,
            "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
            "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='%s'",
            example->host);
    if (result >= 0)
        result = sd_bus_call_method_async(example->bus, NULL, "org.freedesktop.DBus", "/org/freedesktop/DBus",
            "org.freedesktop.DBus", "GetNameOwner", on_owner, example, "s", example->host);
    return result;
}

/* --- The program */

static int leave(Example *example)
{
    end_call(example);
    return sd_event_exit(example->loop, 0);
}

static int on_signal(sd_event_source *source, const struct signalfd_siginfo *signal, void *data)
{
    (void)source;
    (void)signal;
    return leave(data);
}

static void obey(Example *example, const char *line)
{
    if (strcmp(line, "hangup") == 0)
        end_call(example);
    else if (strcmp(line, "quit") == 0)
        leave(example);
    else
        fprintf(stderr, PROGRAM ": unknown command \"%s\"; there are hangup and quit\n", line);
}

static int on_input(sd_event_source *source, int fd, uint32_t events, void *data)
{
    Example *example = data;
    char *line = example->input;
    char *end;
    ssize_t size = read(fd, line + example->typed, sizeof example->input - 1 - example->typed);

    (void)events;
    if (size <= 0) /* the end of the input is not the end of the call */
        return sd_event_source_set_enabled(source, SD_EVENT_OFF);
    line[example->typed + (size_t)size] = '\0';
    while ((end = strchr(line, '\n'))) {
        *end = '\0';
        obey(example, line);
        line = end + 1;
    }
    example->typed = strlen(line);
    if (example->typed == sizeof example->input - 1) {
        obey(example, line); /* which is longer than any command */
        example->typed = 0;
    }
    memmove(example->input, line, example->typed);
    return 0;
}

static int prepare(Example *example)
{
    int result = sd_event_default(&example->loop);
    if (result >= 0)
        result = sd_bus_open_user(&example->bus);
    if (result >= 0)
        result = sd_bus_attach_event(example->bus, example->loop, SD_EVENT_PRIORITY_NORMAL);
    if (result >= 0)
        result = sd_bus_match_signal(example->bus, NULL, "org.freedesktop.DBus.Local", "/org/freedesktop/DBus/Local",
            "org.freedesktop.DBus.Local", "Disconnected", on_bus_closed, example);
    if (result >= 0)
        result = sd_bus_add_object_manager(example->bus, NULL, MANAGER_PATH);
    if (result >= 0)
        result = look_for_host(example);
    return result;
}

static int run(Example *example)
{
    sigset_t stops;
    int result;

    sigemptyset(&stops);
    sigaddset(&stops, SIGINT);
    sigaddset(&stops, SIGTERM);
    sigprocmask(SIG_BLOCK, &stops, NULL);
    sd_event_add_signal(example->loop, NULL, SIGINT, on_signal, example);
    sd_event_add_signal(example->loop, NULL, SIGTERM, on_signal, example);
    result = sd_event_add_io(example->loop, NULL, STDIN_FILENO, EPOLLIN, on_input, example);
    if (result < 0 && result != -EPERM) /* /dev/null, for one, cannot be waited for */
        return check(result, "standard input") < 0;
    return sd_event_loop(example->loop);
}

static bool is_utf8(const char *text) { return mbstowcs(NULL, text, 0) != (size_t)-1; }

/* Whether the options are what the bus takes. */
static bool read_options(int argc, char *argv[], Example *example)
{
    static const struct option options[] = {
        {"host", required_argument, NULL, 'h'},
        {"name", required_argument, NULL, 'n'},
        {"address", required_argument, NULL, 'a'},
        {NULL, 0, NULL, 0},
    };
    int option;

    while ((option = getopt_long(argc, argv, "", options, NULL)) != -1) {
        if (option == 'h')
            example->host = optarg;
        else if (option == 'n')
            example->call.remote_name = optarg;
        else if (option == 'a')
            example->call.address = optarg;
        else
            return false; /* getopt has said why */
    }
    if (optind < argc)
        fprintf(stderr, PROGRAM ": '%s' is no option; there are --host, --name and --address\n", argv[optind]);
    else if (!sd_bus_service_name_is_valid(example->host))
        fputs(PROGRAM ": --host is no bus name; one is like org.example.Host\n", stderr);
    else if (!is_utf8(example->call.remote_name) || !is_utf8(example->call.address))
        fputs(PROGRAM ": --name and --address must be UTF-8\n", stderr);
    else
        return true;
    return false;
}

int main(int argc, char *argv[])
{
    Example example = {
        .host = "org.tarnwickle.voicecall",
        .call = {
            .incoming = true,
            .holdable = true,
            .status = STATUS_INCOMING,
            .remote_name = "",
            .address = "sip:caller@example.org",
            .local_name = "sd-bus example",
            .local_handle = "",
        },
    };
    int result;

    setlocale(LC_CTYPE, "C.UTF-8");
    if (!read_options(argc, argv, &example))
        return 2;
    result = check(prepare(&example), "the session bus") < 0 ? 3 : run(&example);
    for (size_t i = 0; i < 3; ++i)
        sd_bus_slot_unref(example.interfaces[i]);
    free(example.host_owner);
    sd_bus_flush_close_unref(example.bus);
    sd_event_unref(example.loop);
    return result;
}
