#pragma once

#include <QtCore/QList>

#include <algorithm>

// Median, minimum and spread of a figure's repetitions.
inline double median(QList<double> values)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    const qsizetype middle = values.size() / 2;
    return values.size() % 2 ? values.at(middle) : (values.at(middle - 1) + values.at(middle)) / 2;
}

inline double minimum(const QList<double>& values)
{
    return values.isEmpty() ? 0 : *std::min_element(values.cbegin(), values.cend());
}

// The interquartile range: how far apart the middle half of the repetitions lie, which
// one slow repetition (a page fault, another process) does not move.
inline double interquartileRange(QList<double> values)
{
    if (values.size() < 4)
        return 0;
    std::sort(values.begin(), values.end());
    const auto at = [&values](double fraction) {
        const double position = fraction * double(values.size() - 1);
        const qsizetype below = qsizetype(position);
        const double weight = position - double(below);
        return below + 1 < values.size()
            ? values.at(below) * (1 - weight) + values.at(below + 1) * weight
            : values.at(below);
    };
    return at(0.75) - at(0.25);
}
