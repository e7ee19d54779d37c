#include "inkjudgement.h"
#include "text.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::size_t FewestSteps = 10;
constexpr std::uint64_t ShortestWriting = 200; // ms
// The longer side of the box around the ink.
constexpr double LeastMillimetres = 5;
constexpr double LeastShare = 0.03; // of the writing area
constexpr int LeastUnits = 60;      // 3% of the smallest area's width, nearly
// The length of a line by the distance of its ends: what a hand makes of a straight one.
constexpr double StraightestBend = 1.1;

// Nothing when the ink is large enough.
QString tooSmall(const InkSummary& summary, const CPadModel* pad, std::optional<double> unitsPerMillimetre)
{
    const int width = summary.x.size();
    const int height = summary.y.size();
    if (unitsPerMillimetre) {
        if (std::max(width, height) >= LeastMillimetres * *unitsPerMillimetre)
            return {};
        return Text::tr("the ink has %1 x %2 mm")
            .arg(numberText(width / *unitsPerMillimetre, 1), numberText(height / *unitsPerMillimetre, 1));
    }
    const bool isLarge =
        pad ? width >= LeastShare * pad->m_nAreaWidth || height >= LeastShare * pad->m_nAreaHeight
            : std::max(width, height) >= LeastUnits;
    return isLarge ? QString() : Text::tr("the ink has %1 x %2 pad units").arg(width).arg(height);
}

QString objection(const InkSummary& summary, const CPadModel* pad, std::optional<double> unitsPerMillimetre)
{
    if (summary.strokes == 0)
        return Text::tr("there is no ink");
    if (summary.strokesWithLength == 0)
        return Text::tr("there are only dots");
    if (summary.steps < FewestSteps)
        return Text::tr("the strokes have %n steps", nullptr, static_cast<int>(summary.steps));
    if (summary.stepsDuration < ShortestWriting)
        return Text::tr("the pen wrote for %1 ms").arg(summary.stepsDuration);
    QString size = tooSmall(summary, pad, unitsPerMillimetre);
    if (!size.isEmpty())
        return size;
    if (summary.strokesWithLength == 1 &&
        summary.length < StraightestBend * std::hypot(summary.x.size(), summary.y.size()))
        return Text::tr("the ink is one straight line");
    return {};
}

} // namespace

Judgement judge(const InkSummary& summary, const CPadModel* pad, std::optional<double> unitsPerMillimetre)
{
    const QString reason = objection(summary, pad, unitsPerMillimetre);
    return {reason.isEmpty(), reason};
}
