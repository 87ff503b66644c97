#include "quote_board/quote_colors.h"

#include <QString>

#include "common/panel_style.h"

namespace panelry
{

namespace
{

void ReadColor(const StringMap& section, const char* key, QColor& color)
{
    const auto entry = section.find(key);
    const QString name = entry == section.end() ? QString() : QString::fromStdString(entry->second);
    if (QColor::isValidColor(name)) {
        color = QColor(name);
    }
}

}  // namespace

QColor QuoteColors::Of(Tone tone) const
{
    switch (tone) {
        case Tone::Rise:
            return rise;
        case Tone::Fall:
            return fall;
        case Tone::Flat:
            return flat;
        case Tone::Muted:
            return QColor(style::kMutedText);
        case Tone::Plain:
            break;
    }
    return QColor(style::kText);
}

QuoteColors ReadQuoteColors(const ConfigTable* table)
{
    QuoteColors colors;
    const auto section = table ? table->find("quote") : ConfigTable::const_iterator();
    if (table && section != table->end()) {
        ReadColor(section->second, "rise", colors.rise);
        ReadColor(section->second, "fall", colors.fall);
        ReadColor(section->second, "flat", colors.flat);
    }
    return colors;
}

}  // namespace panelry
