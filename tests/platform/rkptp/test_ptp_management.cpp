// SPDX-License-Identifier: MIT
#include "management.h"

#include <QtTest>

using namespace rkptp;

namespace {

const ClockId clockId = {0x02, 0x1d, 0xc1, 0xff, 0xfe, 0x12, 0x34, 0x57};
const QByteArray clockHex("021dc1fffe123457");
const QByteArray masterHex("001dc1fffe123456");

Question questionFor(DataSet dataSet, uint16_t port)
{
    Question question;
    question.dataSet = dataSet;
    question.domain = 5;
    question.sequence = 0x0102;
    question.target = {clockId, port};
    question.asker = {ClockId(), 0xfff0};
    return question;
}

QByteArray hex16(int value)
{
    return QByteArray::number(value, 16).rightJustified(4, '0');
}

// An answer as ptp4l sends it: header, management fields, one TLV.
QByteArray answerBytes(DataSet dataSet, int port, const QByteArray &dataHex)
{
    const int data = dataHex.size() / 2;
    QByteArray hex = "0d02" + hex16(54 + data) + "05000000" + QByteArray(16, '0') + "00000000";
    hex += clockHex + hex16(port) + "0102" + "047f";
    hex += QByteArray(16, '0') + "fff0" + "0000" + "0200";
    hex += "0001" + hex16(2 + data) + hex16(static_cast<int>(dataSet)) + dataHex;
    return QByteArray::fromHex(hex);
}

const QByteArray defaultHex = "0300"
                              "0001"
                              "80"
                              "fffeffff"
                              "80" +
                              clockHex + "0500";
const QByteArray currentHex("0001"
                            "fffffffffff55000"
                            "000000000046d000");
const QByteArray parentHex = masterHex +
                             "0001"
                             "0000"
                             "ffff"
                             "7fffffff"
                             "01"
                             "f8feffff"
                             "80" +
                             masterHex;
const QByteArray timePropertiesHex("0025"
                                   "3c"
                                   "a0");
const QByteArray portHex = clockHex + "0002"
                                      "08"
                                      "00"
                                      "0000000000000000"
                                      "01"
                                      "03"
                                      "00"
                                      "01"
                                      "00"
                                      "02";
const QByteArray timeStatusHex = "fffffffffffffe4b"
                                 "18e9c1f0a0b0c0d0"
                                 "00000000"
                                 "00000000"
                                 "0000"
                                 "000000000000000000000000"
                                 "00000001" +
                                 masterHex;
const QByteArray settingsHex("f8feffff"
                             "0026"
                             "08"
                             "a0");
const QByteArray portPropertiesHex = clockHex + "0002"
                                                "08"
                                                "01"
                                                "04"
                                                "65746830"
                                                "00";

Reading read(const QByteArray &bytes, const Question &asked, Answer &answer)
{
    return readAnswer(reinterpret_cast<const uint8_t *>(bytes.constData()), static_cast<size_t>(bytes.size()),
                      asked, answer);
}

template<typename Data>
Data readAs(DataSet dataSet, uint16_t port, const QByteArray &hex)
{
    Answer answer;
    if (read(answerBytes(dataSet, port, hex), questionFor(dataSet, port), answer) != Reading::Good)
        qFatal("answer not read");
    return std::get<Data>(answer);
}

struct Kind {
    DataSet dataSet;
    uint16_t port;
    QByteArray hex;
};

std::vector<Kind> kinds()
{
    return {{DataSet::Default, 0, defaultHex},
            {DataSet::Current, 0, currentHex},
            {DataSet::Parent, 0, parentHex},
            {DataSet::TimeProperties, 0, timePropertiesHex},
            {DataSet::Port, 2, portHex},
            {DataSet::TimeStatus, 0, timeStatusHex},
            {DataSet::GrandmasterSettings, 0, settingsHex},
            {DataSet::PortProperties, 2, portPropertiesHex}};
}

} // namespace

class TestPtpManagement : public QObject {
    Q_OBJECT
private slots:
    void question();
    void fields();
    void everyTruncationIsForeign();
    void everyWrongHeaderByteIsForeign();
    void answerOfAnotherKindIsForeign();
    void otherPortIsForeign();
    void errorReportIsRefused();
    void textLongerThanItsDataIsForeign();
    void unknownPortStateIsForeign();
    void hugeDatagramIsForeign();
};

void TestPtpManagement::question()
{
    const auto bytes = buildQuestion(questionFor(DataSet::TimeStatus, 0));
    const QByteArray built(reinterpret_cast<const char *>(bytes.data()), static_cast<int>(bytes.size()));
    QCOMPARE(built.toHex(), QByteArray("0d02003605000000000000000000000000000000"
                                       "0000000000000000fff00102047f"
                                       "021dc1fffe123457000000000000"
                                       "00010002c000"));
}

void TestPtpManagement::fields()
{
    const auto clock = readAs<DefaultData>(DataSet::Default, 0, defaultHex);
    QCOMPARE(clock.clock, clockId);
    QCOMPARE(int{clock.domain}, 5);
    QCOMPARE(int{clock.ports}, 1);
    const auto current = readAs<CurrentData>(DataSet::Current, 0, currentHex);
    QCOMPARE(int{current.stepsRemoved}, 1);
    QCOMPARE(qint64{current.meanPathDelay}, qint64{0x46d000});
    const auto parent = readAs<ParentData>(DataSet::Parent, 0, parentHex);
    QCOMPARE(formatPortId(parent.parent), std::string("00-1D-C1-FF-FE-12-34-56-1"));
    QCOMPARE(formatIdentity(parent.grandmaster), std::string("00-1D-C1-FF-FE-12-34-56"));
    const auto properties = readAs<TimePropertiesData>(DataSet::TimeProperties, 0, timePropertiesHex);
    QCOMPARE(int{properties.announcedUtcOffset}, 37);
    QVERIFY(properties.ptpTimescale);
    const auto port = readAs<PortData>(DataSet::Port, 2, portHex);
    QCOMPARE(port.state, PortState::Uncalibrated);
    QCOMPARE(int{port.version}, 2);
    const auto status = readAs<TimeStatusData>(DataSet::TimeStatus, 0, timeStatusHex);
    QCOMPARE(qint64{status.masterOffset}, qint64{-437});
    QCOMPARE(qint64{status.ingressTime}, qint64{0x18e9c1f0a0b0c0d0});
    QVERIFY(status.grandmasterPresent);
    QCOMPARE(formatIdentity(status.grandmaster), std::string("00-1D-C1-FF-FE-12-34-56"));
    QCOMPARE(
        int{readAs<GrandmasterSettingsData>(DataSet::GrandmasterSettings, 0, settingsHex).appliedUtcOffset},
        38);
    const auto named = readAs<PortPropertiesData>(DataSet::PortProperties, 2, portPropertiesHex);
    QCOMPARE(named.interface, std::string("eth0"));
}

void TestPtpManagement::everyTruncationIsForeign()
{
    for (const Kind &kind : kinds()) {
        const QByteArray whole = answerBytes(kind.dataSet, kind.port, kind.hex);
        for (int size = 0; size < whole.size(); ++size) {
            Answer answer;
            QCOMPARE(read(whole.left(size), questionFor(kind.dataSet, kind.port), answer), Reading::Foreign);
            QVERIFY(std::holds_alternative<std::monostate>(answer));
        }
        Answer answer;
        QCOMPARE(read(whole + '\0', questionFor(kind.dataSet, kind.port), answer), Reading::Foreign);
    }
}

void TestPtpManagement::everyWrongHeaderByteIsForeign()
{
    // Type, version, length, domain, source, sequence, target, action, TLV type, TLV length, TLV identifier.
    const int checked[] = {0, 1, 2, 3, 4, 20, 27, 30, 31, 34, 43, 46, 48, 50, 51, 52, 53};
    for (const Kind &kind : kinds()) {
        for (int at : checked) {
            QByteArray bytes = answerBytes(kind.dataSet, kind.port, kind.hex);
            bytes[at] = static_cast<char>(bytes[at] ^ 0x04);
            Answer answer;
            QCOMPARE(read(bytes, questionFor(kind.dataSet, kind.port), answer), Reading::Foreign);
        }
    }
}

void TestPtpManagement::answerOfAnotherKindIsForeign()
{
    for (const Kind &asked : kinds())
        for (const Kind &given : kinds()) {
            Answer answer;
            const Reading reading = read(answerBytes(given.dataSet, given.port, given.hex),
                                         questionFor(asked.dataSet, asked.port), answer);
            QCOMPARE(reading == Reading::Good, asked.dataSet == given.dataSet);
        }
}

void TestPtpManagement::otherPortIsForeign()
{
    Answer answer;
    QCOMPARE(read(answerBytes(DataSet::Port, 3, portHex), questionFor(DataSet::Port, 2), answer),
             Reading::Foreign);
    // The header says port 3 as asked, the data say 2.
    QCOMPARE(read(answerBytes(DataSet::Port, 3, portHex), questionFor(DataSet::Port, 3), answer),
             Reading::Foreign);
    QCOMPARE(read(answerBytes(DataSet::PortProperties, 3, portPropertiesHex),
                  questionFor(DataSet::PortProperties, 3), answer),
             Reading::Foreign);
}

void TestPtpManagement::errorReportIsRefused()
{
    QByteArray bytes = answerBytes(DataSet::TimeStatus, 0, "c00000000000");
    bytes[49] = 2;
    Answer answer;
    QCOMPARE(read(bytes, questionFor(DataSet::TimeStatus, 0), answer), Reading::Refused);
    QVERIFY(std::holds_alternative<std::monostate>(answer));
}

void TestPtpManagement::textLongerThanItsDataIsForeign()
{
    QByteArray hex = portPropertiesHex;
    hex.replace(24, 2, "ff");
    Answer answer;
    QCOMPARE(
        read(answerBytes(DataSet::PortProperties, 2, hex), questionFor(DataSet::PortProperties, 2), answer),
        Reading::Foreign);
}

void TestPtpManagement::unknownPortStateIsForeign()
{
    for (const char *state : {"00", "0a", "ff"}) {
        QByteArray hex = portHex;
        hex.replace(20, 2, state);
        Answer answer;
        QCOMPARE(read(answerBytes(DataSet::Port, 2, hex), questionFor(DataSet::Port, 2), answer),
                 Reading::Foreign);
    }
}

void TestPtpManagement::hugeDatagramIsForeign()
{
    const QByteArray bytes =
        answerBytes(DataSet::PortProperties, 2, portPropertiesHex + QByteArray(6000, '0'));
    Answer answer;
    QCOMPARE(read(bytes, questionFor(DataSet::PortProperties, 2), answer), Reading::Foreign);
}

QTEST_APPLESS_MAIN(TestPtpManagement)
#include "test_ptp_management.moc"
