// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// What is too short to be seen through a bus: the departure of somebody who registered nothing, and a trace line
// that nobody wants.

#include "busconnection.h"
#include "common/trace.h"
#include "privatebus.h"
#include "service/callservice.h"
#include "waitfor.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLoggingCategory>
#include <QtDBus/QDBusConnection>
#include <benchmark/benchmark.h>
#include <optional>

namespace {

class Registry
{
public:
    explicit Registry(const PrivateBus &bus)
    {
        QDBusConnection session = QDBusConnection::sessionBus();
        session.registerObject(QStringLiteral("/zelkovar/call/service"), &m_service, QDBusConnection::ExportAdaptors);
        m_name = session.baseService().toStdString();
        // What arrives before the event loop first runs may be delivered behind what arrives after: the application's
        // arrival behind its registration, which would be taken for its departure.
        QCoreApplication::processEvents();
        m_application.emplace(bus.address().toStdString());
    }

    // Whether it has so many; they are made when there are fewer.
    bool growTo(int registrations)
    {
        for (; m_registrations < registrations; ++m_registrations)
            m_application->send(
                Message::call({m_name, "/zelkovar/call/service", "zelkovar.Call.Service1"}, "RegisterCallManager")
                    .objectPath("/app" + std::to_string(m_registrations)));
        m_application->flush();
        return waitFor([=] { return m_service.ListCallManagers().size() == registrations; });
    }

    // As the bus tells it: of a connection that is as long a name as the application's, and is not it.
    void departureOfAStranger()
    {
        static const QString stranger = QStringLiteral(":1.0");
        QMetaObject::invokeMethod(&m_service, "onNameOwnerChanged", Qt::DirectConnection, Q_ARG(QString, stranger),
            Q_ARG(QString, stranger), Q_ARG(QString, QString()));
    }

private:
    CallService m_service;
    std::string m_name;
    std::optional<BusConnection> m_application;
    int m_registrations = 0;
};

Registry *registry = nullptr;

void departureOfAStranger(benchmark::State &state)
{
    if (!registry->growTo(int(state.range(0))))
        state.SkipWithError("the registrations did not come");
    for (auto _ : state)
        registry->departureOfAStranger();
}
BENCHMARK(departureOfAStranger)->Arg(0)->Arg(1)->Arg(100)->Arg(1000)->Arg(4000);

struct Traced
{
    __attribute__((noinline)) void operation() const
    {
        RINGLET_TRACE();
        benchmark::ClobberMemory();
    }
    __attribute__((noinline)) void silentOperation() const { benchmark::ClobberMemory(); }
};

void operationWithTrace(benchmark::State &state)
{
    const Traced traced;
    for (auto _ : state)
        traced.operation();
}
BENCHMARK(operationWithTrace);

void operationWithoutTrace(benchmark::State &state)
{
    const Traced traced;
    for (auto _ : state)
        traced.silentOperation();
}
BENCHMARK(operationWithoutTrace);

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
    const PrivateBus bus;
    bus.useAsSessionBus();
    Registry theRegistry(bus);
    registry = &theRegistry;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
}
