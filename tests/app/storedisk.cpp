// SPDX-License-Identifier: MIT
//
// The store on a disk of its own, which is full, or read-only, and well again. Runs in a mount namespace.
#include "support/dialog.h"
#include "support/otherprogram.h"

#include <memory>
#include <sys/mount.h>

using namespace DialogTest;
using namespace StoreTest;

class TestStoreDisk : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void full();
    void readOnlyFromTheStart();

private:
    void open()
    {
        m_dialog = std::make_unique<QCorvel>(true, nullptr);
        show(m_dialog.get());
    }
    QString bar() const
    {
        const auto *label = m_dialog->findChild<QLabel *>(QStringLiteral("storeBar"));
        return label->isHidden() ? QString() : label->text();
    }
    QString told(const char *reason) const
    {
        return m_store->folder() + QStringLiteral("/corvel/default.rkcfg: ") + QLatin1String(reason) +
               QStringLiteral("; edits are not kept");
    }
    bool remount(unsigned long flags) const
    {
        return mount("none", m_store->folder().toLocal8Bit().constData(), "tmpfs", flags, "size=2m") == 0;
    }
    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestStoreDisk::init()
{
    m_store = std::make_unique<FreshStore>();
    QVERIFY(remount(0));
    setGlobalDword(StorePath::AvHAL, MachineValue::NmosOverride, 1);
    open();
}

void TestStoreDisk::cleanup()
{
    m_dialog.reset();
    rkCFGClose(RKCFG_DEFAULT_STORE, 0);
    umount2(m_store->folder().toLocal8Bit().constData(), MNT_DETACH);
    m_store.reset();
}

void TestStoreDisk::full()
{
    QFile filler(m_store->folder() + QStringLiteral("/filler"));
    QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (filler.write(QByteArray(4096, 'x')) > 0) {
    }
    // What has room in the log already goes on; sooner or later it has not.
    for (quint32 port = 1; bar().isEmpty() && port < 10000; ++port)
        typeText(m_dialog->m_pEditRecDstPort, QString::number(port));
    QCOMPARE(bar(), told("No space left on device"));
    QVERIFY(filler.remove());
    QTRY_COMPARE(bar(), QString());
    typeText(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("5004"));
    QCOMPARE(bar(), QString());
}

void TestStoreDisk::readOnlyFromTheStart()
{
    m_dialog.reset();
    rkCFGClose(RKCFG_DEFAULT_STORE, 1);
    QVERIFY(remount(MS_REMOUNT | MS_RDONLY));
    open();
    QCOMPARE(bar(), told("Read-only file system"));
    QVERIFY(remount(MS_REMOUNT));
    QTRY_COMPARE(bar(), QString());
    typeText(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("5004"));
}

CORVEL_DIALOG_TEST_MAIN(TestStoreDisk)
#include "storedisk.moc"
