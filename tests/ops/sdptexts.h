// SPDX-License-Identifier: MIT
//
// A session description without fault, and edits of it. The edits of a test read like what went wrong.
#ifndef CORVEL_TESTS_SDPTEXTS_H
#define CORVEL_TESTS_SDPTEXTS_H

#include "ops/sdptext.h"

#include <QtTest>

namespace sdptexts {

// Two legs of a picture, its sound and its ancillary data: nothing to complain about.
inline QByteArray faultless()
{
    QByteArray text = "v=0\n"
                      "o=- 1 1 IN IP4 10.0.0.5\n"
                      "s=Studio 1\n"
                      "t=0 0\n"
                      "a=group:DUP red blue\n"
                      "m=video 20000 RTP/AVP 96\n"
                      "c=IN IP4 239.1.1.1/64\n"
                      "a=source-filter: incl IN IP4 239.1.1.1 10.0.0.5\n"
                      "a=rtpmap:96 raw/90000\n"
                      "a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; exactframerate=25; depth=10; "
                      "colorimetry=BT709; PM=2110GPM; SSN=ST2110-20:2017; TP=2110TPN; interlace;\n"
                      "a=framerate:25\n"
                      "a=ts-refclk:ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127\n"
                      "a=mediaclk:direct=0\n"
                      "a=mid:red\n"
                      "a=sendonly\n";
    QByteArray second = text.mid(text.indexOf("m=video"));
    second.replace("239.1.1.1", "239.2.1.1").replace("10.0.0.5", "10.1.0.5").replace("mid:red", "mid:blue");
    text += second;
    text += "m=audio 20010 RTP/AVP 97\n"
            "c=IN IP4 239.1.1.2/64\n"
            "a=source-filter: incl IN IP4 239.1.1.2 10.0.0.5\n"
            "a=rtpmap:97 L24/48000/8\n"
            "a=ptime:1\n"
            "a=ts-refclk:ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127\n"
            "a=mediaclk:direct=0\n"
            "a=sendonly\n"
            "m=video 20020 RTP/AVP 98\n"
            "c=IN IP4 239.1.1.3/64\n"
            "a=source-filter: incl IN IP4 239.1.1.3 10.0.0.5\n"
            "a=rtpmap:98 smpte291/90000\n"
            "a=fmtp:98 SSN=ST2110-40:2018; exactframerate=25;\n"
            "a=ts-refclk:localmac=AC-DE-48-23-45-67\n"
            "a=mediaclk:direct=0\n"
            "a=sendonly\n";
    return text.replace("\n", "\r\n");
}

// The line numbers of faultless() that rows name.
enum Line { Video = 6, VideoGroup, VideoFilter, VideoMap, VideoFormat, VideoFrames, VideoClock };
enum { Second = 16, SecondClock = 22, Audio = 26, AudioGroup, AudioFilter, AudioMap, AudioTime, AudioClock };
enum { AudioMedia = 32, Anc = 34, AncGroup, AncFilter, AncMap, AncFormat, AncClock, AncMedia };

// The text with the first `from` turned into `to`; the test fails when it is not there.
inline QByteArray edited(QByteArray text, QByteArray from, QByteArray to)
{
    const int at = text.indexOf(from.replace("\n", "\r\n"));
    if (at < 0)
        qFatal("not in the text: %s", from.constData());
    return text.replace(at, from.size(), to.replace("\n", "\r\n"));
}

inline ops::SdpText parsed(const QByteArray &text, const QByteArray &file = "a.sdp")
{
    return ops::parseSdp(text, file);
}

} // namespace sdptexts

#endif
