// SPDX-License-Identifier: MIT
//
// A dialog with a few channels, a folder for the files of one case, and the file commands pressed with an
// answer for their dialog.
#ifndef CORVEL_TEST_FILEFIXTURE_H
#define CORVEL_TEST_FILEFIXTURE_H

#include "support/dialog.h"
#include "support/filedialog.h"
#include "support/snapshot.h"

#include <memory>

class FileFixture {
public:
    explicit FileFixture(quint32 channels = 4)
    {
        setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
        setGlobalDword(StorePath::Config, "MaxIntChannels", channels);
        for (int channel = 0; channel < int(channels); ++channel) {
            StoreTest::put(channel, "VideoType", 1);
            StoreTest::put(channel, "SignalFormat", kFormat);
            StoreTest::put(channel, "ReceiveAudChannels", 2);
            StoreTest::put(channel, "ReceiveAudTotalChannels", 4);
            StoreTest::put(channel, "ReceiveDestinationIp", QStringLiteral("239.1.1.%1").arg(channel % 256));
            StoreTest::put(channel, "TransmitInterface", QStringLiteral("10.9.9.%1").arg(channel % 256));
        }
        commitStore();
        dialog = std::make_unique<QCorvel>(true, nullptr);
        DialogTest::show(dialog.get());
    }
    ~FileFixture()
    {
        dialog.reset();
        QDir(documents() + QStringLiteral("/2110")).removeRecursively();
    }

    static QString documents() { return QString::fromLocal8Bit(qgetenv("XDG_DOCUMENTS_DIR")); }
    QString in(const QString &name) const
    {
        return QDir::isAbsolutePath(name) ? name : folder.filePath(name);
    }
    QStringList files() const
    {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    QByteArray read(const QString &name) const
    {
        QFile file(in(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArrayLiteral("cannot be read");
    }
    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(in(name));
        QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(name));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    }

    // Each presses the command's button and answers its dialog: a null name cancels, any other is below
    // the folder unless it is absolute. False when the dialog did not come or did not take the name.
    bool save(const QString &name) { return press(dialog->m_pCmdSave, name); }
    bool load(const QString &name) { return press(dialog->m_pCmdLoad, name); }
    bool saveElement(const QString &name) { return press(dialog->m_pCmdSaveElement, name); }

    // The override for the whole machine, as a second process sees it.
    static QString globalOverride()
    {
        const StoreTest::Snapshot now = StoreTest::snapshot();
        for (auto it = now.begin(); it != now.end(); ++it) {
            if (it.key().toLower() == QLatin1String("kwx\\advanced\\avhal:nmosoverride"))
                return it.value();
        }
        return QString();
    }

    static constexpr quint32 kFormat = 0x2380b23b; // 1920 x 1080
    QTemporaryDir folder;
    FreshStore store;
    std::unique_ptr<QCorvel> dialog;

private:
    bool press(QPushButton *button, const QString &name)
    {
        DialogTest::FileAnswer answer(name.isNull() ? name : in(name));
        DialogTest::click(button);
        return answer.shown == 1 && !answer.stayed;
    }
};

#endif
