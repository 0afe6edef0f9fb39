// SPDX-License-Identifier: MIT
//
// Slots, files: the commands that load and save settings files and session descriptions. Here the name is
// asked for; loadfile.cpp and savefile.cpp do the work.
#include "app/dialog/filedialogs.h"
#include "app/dialog/private.h"
#include "app/slots/filework.h"
#include "rkos.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>

namespace {

constexpr int kPathBytes = 4096;
constexpr int kFolderMode = 777; // the digits of the mode in decimal, as the library wants them

QString settingsFolder()
{
    char folder[kPathBytes] = {};
    rkOSGetDocumentsDir(folder);
    return QString::fromUtf8(folder) + QLatin1String("2110/");
}

QString settingsFilter()
{
    return QCorvel::tr(
        "Settings File (*.ipp);; Session Description File (*.sdp);; Text File (*.txt);; All files (*.*)");
}

} // namespace

// --------------------------------------------------------------------------------------------------- saving

void QCorvel::save()
{
    QString folder = m_lastPath;
    if (folder.isEmpty()) {
        folder = settingsFolder();
        if (!rkOSFileExists(folder.toUtf8().constData()))
            rkOSMakeDir(folder.toUtf8().constData(), kFolderMode);
    }
    const QPointer<QCorvel> self(this); // a host may delete the dialog meanwhile
    const QString answer = askFileToSave(tr("Ini File"), folder, settingsFilter());
    if (!self)
        return;
    // Before the answer is looked at: a cancelled dialog leads to the current folder.
    m_lastPath = QFileInfo(answer).absoluteDir().absolutePath();
    if (answer.isEmpty())
        return;
    if (isSessionDescription(answer))
        d->saveDescriptions(answer);
    else
        d->saveSettings(answer);
}

void QCorvel::saveElement()
{
    const int channel = d->channel();
    const QPointer<QCorvel> self(this);
    const QString answer = askFileToSave(tr("Save Current Element"), QString(),
                                         tr("Session File(*.sdp);; Text File (*.txt);; All files (*.*)"));
    if (!self)
        return;
    d->saveElementDescriptions(answer, channel);
}

// -------------------------------------------------------------------------------------------------- loading

// Only saving moves the folder that both dialogs start in.
void QCorvel::load()
{
    const QString folder = m_lastPath.isEmpty() ? settingsFolder() : m_lastPath;
    const QPointer<QCorvel> self(this);
    const QString answer = askFileToLoad(tr("Ini File"), folder, settingsFilter());
    if (self && !answer.isEmpty())
        d->loadFile(answer);
}
