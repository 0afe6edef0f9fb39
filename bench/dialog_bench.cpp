// SPDX-License-Identifier: MIT
//
// How long one edit takes: one field changed, all values of the element handed over, store saved. And
// showing another channel.
#include "support/dialog.h"

class DialogBench : public QObject {
    Q_OBJECT

private slots:
    // What bare_dialog has to be made of to be a fair yardstick.
    void census()
    {
        QCorvel dialog(true, nullptr);
        QMap<QString, int> count;
        for (const QWidget *widget : dialog.findChildren<QWidget *>())
            ++count[QLatin1String(widget->metaObject()->className())];
        for (auto it = count.cbegin(); it != count.cend(); ++it)
            qInfo("%s %d", qPrintable(it.key()), it.value());
    }
    void oneEdit()
    {
        QCorvel dialog(true, nullptr);
        dialog.show();
        dialog.m_pNmosOverride->setChecked(true);
        int port = 20000;
        QBENCHMARK
        {
            dialog.m_pEditRecDstPort->setText(QString::number(port++ % 60000));
            QMetaObject::invokeMethod(&dialog, "onSettingChanged");
        }
        QCOMPARE(StoreTest::number(0, "ReceiveDestinationPort"), quint32(--port % 60000));
    }
    void showChannel()
    {
        QCorvel dialog(true, nullptr);
        dialog.show();
        int channel = 0;
        QBENCHMARK
        {
            dialog.m_pChannel->setCurrentIndex(++channel % 4);
        }
    }

private:
    FreshStore m_store;
};

CORVEL_DIALOG_TEST_MAIN(DialogBench)
#include "dialog_bench.moc"
