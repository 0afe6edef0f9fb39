// SPDX-License-Identifier: MIT
//
// The dialog's meta-object: hosts call slots by index and by name and make the dialog without its header,
// so order, signatures and argument names are an interface.
#include "support/dialog.h"

#include <memory>

namespace {

struct Row {
    const char *signature;
    const char *arguments; // names, comma between
};

constexpr int kSignalCount = 2;

// clang-format off
const Row kMethods[] = {
    {"loadFile(QString)",                           ""},
    {"nmosCloseThread()",                           ""},
    {"ok()",                                        ""},
    {"load()",                                      ""},
    {"save()",                                      ""},
    {"saveElement()",                               ""},
    {"cancel()",                                    ""},
    {"showurls()",                                  ""},
    {"onSettingChanged()",                          ""},
    {"onBoardSettingChanged(bool)",                 "value"},
    {"onSelectionChanged(bool)",                    "value"},
    {"onFileSettingChanged(bool)",                  "value"},
    {"onTypeSettingChanged(int)",                   "index"},
    {"onChannelSettingChanged(int)",                "index"},
    {"onSettingChanged(int)",                       "index"},
    {"onSettingChanged(bool)",                      "value"},
    {"onItemChanged(QTreeWidgetItem*,int)",         "pItem,column"},
    {"timerEvent(QTimerEvent*)",                    "event"},
    {"onLockSetting(bool)",                         ""},
    {"onLockGroup(bool)",                           ""},
    {"updateLockedItems(QObject*)",                 "sender"},
    {"updateLockedItemsForScopes(QObject*)",        "sender"},
    {"onFormatChanged(int)",                        ""},
    {"enableAudChannel(int)",                       ""},
    {"enableAudFlow(int)",                          ""},
    {"onInterfaceEdit()",                           ""},
    {"onInterfaceAlert()",                          ""},
    {"audChanUseSingle(bool)",                      ""},
    {"onUseGmId(bool)",                             ""},
    {"onSendSdp(void*,int,int,bool)",               "sdp,size,channel,isSender"},
    {"onShowNmosCfg()",                             ""},
    {"onSetNmosCfg()",                              ""},
    {"onSetConfig()",                               ""},
    {"onMdnsDeviceFound(QString,QUrl,QJsonDocument)", "serviceName,url,selfDoc"},
    {"onMdnsConnect()",                             ""},
    {"onNmosThreadReady(int)",                      ""},
    {"toggleNmosLog(bool)",                         ""},
};
// clang-format on

constexpr int kMethodCount = sizeof kMethods / sizeof *kMethods;

} // namespace

class TestMeta : public QObject {
    Q_OBJECT

private slots:
    void thirtySevenMethods();
    void method_data();
    void method();
    void embeddedConstructor();
    void madeByAHostWithoutTheHeader();
    void emptySlotsCanBeCalledByName();
};

void TestMeta::thirtySevenMethods()
{
    const QMetaObject &meta = QCorvel::staticMetaObject;
    QCOMPARE(kMethodCount, 37);
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 37);
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    QCOMPARE(QByteArray(meta.superClass()->className()), QByteArray("QDialog"));
}

void TestMeta::method_data()
{
    QTest::addColumn<int>("index");
    for (int index = 0; index < kMethodCount; ++index)
        QTest::newRow(kMethods[index].signature) << index;
}

void TestMeta::method()
{
    QFETCH(int, index);
    const QMetaObject &meta = QCorvel::staticMetaObject;
    const QMetaMethod method = meta.method(meta.methodOffset() + index);
    QCOMPARE(method.methodSignature(), QByteArray(kMethods[index].signature));
    QCOMPARE(method.methodType(), index < kSignalCount ? QMetaMethod::Signal : QMetaMethod::Slot);
    QCOMPARE(method.access(), QMetaMethod::Public);
    QCOMPARE(method.attributes() & QMetaMethod::Cloned, 0); // a default argument would add a second one
    QCOMPARE(QByteArray(method.typeName()), QByteArray("void"));
    const QByteArrayList names = method.parameterNames();
    QCOMPARE(names.join(',').replace(",", "").isEmpty() ? QByteArray() : names.join(','),
             QByteArray(kMethods[index].arguments));
}

void TestMeta::embeddedConstructor()
{
    const QMetaObject &meta = QCorvel::staticMetaObject;
    QCOMPARE(meta.constructorCount(), 1);
    QCOMPARE(meta.constructor(0).methodSignature(), QByteArray("QCorvel(QWidget*)"));
}

void TestMeta::madeByAHostWithoutTheHeader()
{
    const FreshStore store;
    QWidget host;
    QWidget *parent = &host;
    QObject *made = QCorvel::staticMetaObject.newInstance(Q_ARG(QWidget *, parent));
    QVERIFY(made);
    QDialog *dialog = qobject_cast<QDialog *>(made);
    QVERIFY(dialog);
    QCOMPARE(dialog->parentWidget(), parent);
    QVERIFY(!QCorvel::isStandAlone());
    QCOMPARE(dialog->windowTitle(), QStringLiteral("IP Video Setup"));
}

// They wait for a node inside the process, which this program does not have.
void TestMeta::emptySlotsCanBeCalledByName()
{
    const FreshStore store;
    QCorvel dialog(true, nullptr);
    const QByteArray before = StoreTest::dump();
    QTreeWidgetItem *item = nullptr;
    QVERIFY(
        QMetaObject::invokeMethod(&dialog, "onItemChanged", Q_ARG(QTreeWidgetItem *, item), Q_ARG(int, 0)));
    QVERIFY(QMetaObject::invokeMethod(&dialog, "onMdnsDeviceFound", Q_ARG(QString, QStringLiteral("node")),
                                      Q_ARG(QUrl, QUrl()), Q_ARG(QJsonDocument, QJsonDocument())));
    QVERIFY(QMetaObject::invokeMethod(&dialog, "onMdnsConnect"));
    QVERIFY(QMetaObject::invokeMethod(&dialog, "onNmosThreadReady", Q_ARG(int, 1)));
    dialog.restartNmos();
    dialog.asyncPopulateSenders();
    QCOMPARE(StoreTest::dump(), before);
}

CORVEL_DIALOG_TEST_MAIN(TestMeta)
#include "test_meta.moc"
