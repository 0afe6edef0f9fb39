// SPDX-License-Identifier: MIT
//
// Random configurations for round trips; the same seed always gives the same one.
#ifndef TESTS_OPS_RANDOMSTORE_H
#define TESTS_OPS_RANDOMSTORE_H

#include "ops/vocabulary.h"

#include <random>

class RandomStore {
public:
    explicit RandomStore(unsigned seed) : m_random(seed) {}

    // Any bytes but zero in paths and names, any bytes in texts.
    ops::Snapshot anything()
    {
        ops::Snapshot values;
        for (int row = below(40); row > 0; --row) {
            const QByteArray path = below(2) ? ops::channelPath(below(12)) : noise(1 + below(30), false);
            values.set(path, noise(1 + below(20), false), value());
        }
        return values;
    }

    // Known names of some channels, with values of their own type, in range or not.
    ops::Snapshot channels(int count)
    {
        ops::Snapshot values;
        values.set("KWX\\Config", "MaxIntChannels", ops::Value::ofNumber(static_cast<quint32>(count)));
        for (int channel = 0; channel < count; ++channel) {
            for (const ops::KnownName &known : ops::knownNames()) {
                if (known.path.isEmpty() && below(2))
                    values.set(ops::channelPath(channel), known.name, value());
            }
        }
        return values;
    }

private:
    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    QByteArray noise(int size, bool zeros)
    {
        QByteArray bytes;
        while (bytes.size() < size)
            bytes += static_cast<char>(zeros ? below(256) : 1 + below(255));
        return bytes;
    }

    ops::Value value()
    {
        static const char *const texts[] = {"",
                                            "239.1.2.3",
                                            "=SUM(A1)",
                                            "+1",
                                            "-1",
                                            "@x",
                                            "'quoted'",
                                            "(empty)",
                                            "a,b;c",
                                            "\"",
                                            "line\nend",
                                            " blank ",
                                            "Stra\xc3\x9f"
                                            "e",
                                            "\t",
                                            "(text)x"};
        switch (below(4)) {
        case 0:
            return ops::Value::ofText(noise(below(40), true));
        case 1:
            return ops::Value::ofText(texts[below(int(std::size(texts)))]);
        case 2:
            return ops::Value::ofNumber(static_cast<quint32>(below(70)));
        default:
            return ops::Value::ofNumber(static_cast<quint32>(m_random()));
        }
    }

    std::mt19937 m_random;
};

#endif
