#include "model/DraftModel.h"

#include "localisation/L10n.h"

namespace pelloran {

std::optional<DraftSlot> DraftSlot::fromRawValue(QStringView text) {
    for (const DraftSlot slot : allCases()) {
        if (text == slot.rawValue()) {
            return slot;
        }
    }
    return std::nullopt;
}

QString DraftSlot::rawValue() const {
    switch (value) {
    case left:
        return QStringLiteral("left");
    case middle:
        return QStringLiteral("middle");
    case right:
        return QStringLiteral("right");
    }
    Q_UNREACHABLE();
}

QString DraftSlot::label() const {
    return L10n::tr(QStringLiteral("slot.") + rawValue());
}

AppConfig::Regions AppConfig::defaultCardRois() {
    return {
        {DraftSlot::left, {0.155, 0.155, 0.155, 0.5}},
        {DraftSlot::middle, {0.325, 0.155, 0.155, 0.5}},
        {DraftSlot::right, {0.495, 0.155, 0.155, 0.5}},
    };
}

AppConfig::Regions AppConfig::defaultHeroRois() {
    return {
        {DraftSlot::left, {0.18, 0.16, 0.18, 0.4}},
        {DraftSlot::middle, {0.40, 0.16, 0.18, 0.4}},
        {DraftSlot::right, {0.62, 0.16, 0.18, 0.4}},
    };
}

} // namespace pelloran
