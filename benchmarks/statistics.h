#pragma once

#include <QtCore/QList>

#include <algorithm>

// Median and minimum of a figure's repetitions.
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
