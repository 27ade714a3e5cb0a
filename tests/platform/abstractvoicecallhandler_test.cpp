// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include <QtCore/QMetaEnum>
#include <abstractvoicecallhandler.h>
#include <gmock/gmock.h>

namespace {

class Handler : public AbstractVoiceCallHandler
{
public:
    MOCK_METHOD(AbstractVoiceCallProvider *, provider, (), (const, override));
    MOCK_METHOD(QString, handlerId, (), (const, override));
    MOCK_METHOD(QString, lineId, (), (const, override));
    MOCK_METHOD(QDateTime, startedAt, (), (const, override));
    MOCK_METHOD(int, duration, (), (const, override));
    MOCK_METHOD(bool, isIncoming, (), (const, override));
    MOCK_METHOD(bool, isMultiparty, (), (const, override));
    MOCK_METHOD(bool, isEmergency, (), (const, override));
    MOCK_METHOD(bool, isForwarded, (), (const, override));
    MOCK_METHOD(bool, isRemoteHeld, (), (const, override));
    MOCK_METHOD(QString, parentHandlerId, (), (const, override));
    MOCK_METHOD(QList<AbstractVoiceCallHandler *>, childCalls, (), (const, override));
    MOCK_METHOD(QString, uri, (), (const, override));
    MOCK_METHOD(QString, appId, (), (const, override));
    MOCK_METHOD(bool, supportsDtmf, (), (const, override));
    MOCK_METHOD(bool, supportsMultiparty, (), (const, override));
    MOCK_METHOD(bool, holdable, (), (const, override));
    MOCK_METHOD(VoiceCallStatus, status, (), (const, override));
    MOCK_METHOD(void, answer, (), (override));
    MOCK_METHOD(void, hangup, (), (override));
    MOCK_METHOD(void, hold, (bool), (override));
    MOCK_METHOD(void, deflect, (const QString &), (override));
    MOCK_METHOD(void, sendDtmf, (const QString &), (override));
    MOCK_METHOD(void, merge, (const QString &), (override));
    MOCK_METHOD(void, split, (), (override));
};

} // namespace

TEST(AbstractVoiceCallHandler, IsOngoingExactlyWhenActiveOrHeld)
{
    const auto statuses = QMetaEnum::fromType<AbstractVoiceCallHandler::VoiceCallStatus>();
    ASSERT_EQ(statuses.keyCount(), 8);
    for (int i = 0; i < statuses.keyCount(); ++i) {
        testing::NiceMock<Handler> handler;
        const auto status = AbstractVoiceCallHandler::VoiceCallStatus(statuses.value(i));
        ON_CALL(handler, status()).WillByDefault(testing::Return(status));
        EXPECT_EQ(handler.isOngoing(),
            status == AbstractVoiceCallHandler::StatusActive || status == AbstractVoiceCallHandler::StatusHeld)
            << statuses.key(i);
    }
}
