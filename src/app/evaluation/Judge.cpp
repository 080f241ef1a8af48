#include "app/evaluation/Judge.h"

#include "data/WinrateStore.h"
#include "names/NameMatching.h"

#include <algorithm>
#include <utility>

namespace pelloran::evaluation {

bool Look::agreesWith(const Look& other) const {
    return std::ranges::equal(matches, other.matches, {}, &SlotMatch::cardId, &SlotMatch::cardId);
}

Judge::Judge(const WinrateStore& winrates)
    : store(winrates)
    , cardNames{{AppLanguage::zh, {}}, {AppLanguage::en, {}}} {
    const auto add = [](QSet<QString>& names, const std::optional<QString>& name) {
        if (name && !NameMatching::normalize(*name).isEmpty()) {
            names.insert(NameMatching::normalize(*name));
        }
    };
    for (const auto& [id, card] : store.byId()) {
        add(cardNames[AppLanguage::zh], card.nameZh);
        add(cardNames[AppLanguage::en], card.nameEn);
    }
    for (const auto& [key, row] : store.classesByKey()) {
        add(classNames, key);
        add(classNames, row.displayName(AppLanguage::zh));
        add(classNames, row.displayName(AppLanguage::en));
        for (const QString& hero : row.heroNames.value_or(std::vector<QString>())) {
            add(classNames, hero);
        }
    }
}

std::optional<Judge::Known> Judge::known(const Truth& truth, const QString& id, DraftPhase rules) const {
    Known found;
    QStringList names;
    if (rules == DraftPhase::heroPick) {
        const auto row = store.classStats(id);
        if (!row) {
            return std::nullopt;
        }
        found.shown = row->displayName(truth.language);
        names = {id, row->displayName(AppLanguage::zh), row->displayName(AppLanguage::en)};
        for (const QString& hero : row->heroNames.value_or(std::vector<QString>())) {
            names.append(hero);
        }
    } else {
        const auto card = store.stats(id);
        if (!card) {
            return std::nullopt;
        }
        found.shown = card->displayName(truth.language);
        names = {(truth.language == AppLanguage::zh ? card->nameZh : card->nameEn).value_or(QString())};
    }
    for (const QString& name : std::as_const(names)) {
        if (const QString normalized = NameMatching::normalize(name); !normalized.isEmpty()) {
            found.normalized.append(normalized);
        }
    }
    return found;
}

bool Judge::isKnown(const Truth& truth, const Offer& offer) const {
    const QString name = NameMatching::normalize(offer.name);
    if (truth.phase == DraftPhase::heroPick) {
        return store.classStats(offer.id) || classNames.contains(name);
    }
    return store.stats(offer.id) || cardNames.at(truth.language).contains(name);
}

Answer Judge::judge(const Truth& truth, DraftPhase rules, const SlotMatch& match) const {
    Answer answer{rules, match, std::nullopt, std::nullopt, std::nullopt};
    QStringList names;
    if (match.cardId) {
        const auto found = known(truth, *match.cardId, rules);
        answer.shown = found ? found->shown : *match.cardId;
        names = found ? found->normalized : QStringList();
    }
    if (truth.phase == DraftPhase::idle) {
        if (match.cardId) {
            answer.verdict = Verdict::falseOffer;
        }
        return answer;
    }
    answer.offered = truth.offers[match.slot];
    if (!answer.offered) {
        return answer;
    }
    if (!isKnown(truth, *answer.offered)) {
        answer.verdict = match.cardId ? Verdict::wrongMissing : Verdict::missing;
    } else if (!match.cardId) {
        answer.verdict = Verdict::unread;
    } else {
        const bool right =
            *match.cardId == answer.offered->id || names.contains(NameMatching::normalize(answer.offered->name));
        answer.verdict = right ? Verdict::right : Verdict::wrong;
    }
    return answer;
}

std::vector<Answer> Judge::judge(const Truth& truth, const Look& look) const {
    std::vector<Answer> answers;
    answers.reserve(look.matches.size());
    for (const SlotMatch& match : look.matches) {
        answers.push_back(judge(truth, look.rules, match));
    }
    return answers;
}

std::vector<TextAnswer> Judge::judgeTexts(const Truth& truth, const QImage& window, const BoxReader& reader) const {
    std::vector<TextAnswer> answers;
    for (const BoxedText& text : truth.texts) {
        TextAnswer& answer = answers.emplace_back(TextAnswer{text, reader(window, text.box), Verdict::unread});
        const QString name = NameMatching::normalize(text.text);
        if (!cardNames.at(truth.language).contains(name)) {
            answer.verdict = answer.read ? Verdict::wrongMissing : Verdict::missing;
        } else if (answer.read) {
            answer.verdict = NameMatching::normalize(*answer.read) == name ? Verdict::right : Verdict::wrong;
        }
    }
    return answers;
}

} // namespace pelloran::evaluation
