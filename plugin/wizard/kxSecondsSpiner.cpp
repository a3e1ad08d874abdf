#include <wizard/kxSecondsSpiner.h>

namespace
{
constexpr int Decimals = 6; // a frame of any usual rate is far longer than the last of them
constexpr int ShownDecimals = 2;
} // namespace

kxSecondsSpiner::kxSecondsSpiner(QWidget* parent) : QKXDoubleSpiner(parent)
{
    setDecimals(Decimals);
}

QString kxSecondsSpiner::textFromValue(double value) const
{
    QString text = QKXDoubleSpiner::textFromValue(value);
    for (int cut = 0; cut < Decimals - ShownDecimals && text.endsWith(QLatin1Char('0')); ++cut)
        text.chop(1);
    return text;
}
