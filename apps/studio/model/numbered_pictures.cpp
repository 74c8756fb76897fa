#include "apps/studio/model/numbered_pictures.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <set>

namespace lumiset::studio {
namespace {

/// "shot_0012.png" in its parts.
struct NumberedName {
    QString folder, stem, ending;
    int digits = 0;
    int number = 0;

    static std::optional<NumberedName> of(const QString& file) {
        static const QRegularExpression form(
            R"(^(.*?)(\d{1,9})(\.(?:png|jpe?g|tiff?|webp|bmp|tga|exr|dpx|ppm|pgm|jp2))$)",
            QRegularExpression::CaseInsensitiveOption);
        const QFileInfo info(file);
        const QRegularExpressionMatch match = form.match(info.fileName());
        if (!match.hasMatch() || match.captured(1).contains('%')) {
            return std::nullopt;
        }
        return NumberedName{info.path(), match.captured(1), match.captured(3),
                            static_cast<int>(match.capturedLength(2)), match.captured(2).toInt()};
    }
    /// Numbers without leading zeros have as many digits as they need.
    [[nodiscard]] QString pattern(bool padded) const {
        return folder + '/' + stem + (padded ? "%0" + QString::number(digits) + 'd' : QStringLiteral("%d")) + ending;
    }
};

}  // namespace

std::optional<QString> sequenceOf(const QStringList& files) {
    std::set<int> numbers;
    std::set<int> digits;
    std::optional<NumberedName> first;
    for (const QString& file : files) {
        const auto name = NumberedName::of(file);
        if (!name ||
            (first && (name->folder != first->folder || name->stem != first->stem || name->ending != first->ending))) {
            return std::nullopt;
        }
        first = first ? first : name;
        numbers.insert(name->number);
        digits.insert(name->digits);
    }
    const bool complete = numbers.size() >= 2 && numbers.size() == static_cast<std::size_t>(files.size()) &&
                          *numbers.rbegin() - *numbers.begin() + 1 == static_cast<int>(numbers.size());
    if (!complete) {
        return std::nullopt;
    }
    return first->pattern(digits.size() == 1) + ':' + QString::number(*numbers.begin()) + '-' +
           QString::number(*numbers.rbegin());
}

std::optional<QString> sequenceAround(const QString& file) {
    const auto name = NumberedName::of(file);
    if (!name || !QFileInfo::exists(file)) {
        return std::nullopt;
    }
    const auto exists = [&](int number) {
        const QString text = QString::number(number);
        return number >= 0 && QFileInfo::exists(name->folder + '/' + name->stem +
                                                text.rightJustified(name->digits, '0') + name->ending);
    };
    return exists(name->number - 1) || exists(name->number + 1) ? std::optional(name->pattern(true)) : std::nullopt;
}

}  // namespace lumiset::studio
