// SPDX-License-Identifier: MIT
//
// What a file command has to say when it is done, in one line. Texts only; any thread.
#ifndef CORVEL_VIEW_FILENEWS_H
#define CORVEL_VIEW_FILENEWS_H

#include <QString>

namespace FileNews {

// What came out of a file or went into it.
struct Counts {
    int channels = 0;
    int values = 0;
    // left out, by the reason
    int interfaces = 0;
    int unknown = 0;
    int beforeSections = 0;
    int locked = 0;
    bool endsEarly = false; // a section below the first one ended the reading
};

// The file's name without its folder, cut in the middle when it is too long for the line.
QString nameOf(const QString &path);

// "Loaded site.ipp: 12 channels, 1,160 values, 3 left out: 2 interfaces, 1 unknown key"
QString loaded(const QString &path, const Counts &counts);
// "Loaded site.sdp into channel 2: 7 values, 1 left out: 1 locked"
QString loadedDescription(const QString &path, int channel, const Counts &counts);
// "Saved site.ipp: 12 channels, 1,160 values"
QString saved(const QString &path, const Counts &counts);

// The reason stands behind the colon: "Nothing loaded from x.txt: it holds no settings"
QString notLoaded(const QString &path, const QString &reason);
QString notSaved(const QString &path, const QString &reason);

// Cancelled: everything was taken back, or what was done by then stays.
QString loadTakenBack(const QString &path);
QString loadCutShort(const QString &path, const Counts &counts);
QString saveCutShort(const QString &path, const Counts &counts);

} // namespace FileNews

#endif
