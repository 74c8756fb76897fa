#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace lumiset::studio {

/// Numbered pictures of one folder as the clip that they are, "shot_%04d.png:10-80"; nothing for anything else, and
/// where numbers between the first and the last are missing.
[[nodiscard]] std::optional<QString> sequenceOf(const QStringList& files);

/// The sequence that a picture is one of, all of it, "shot_%04d.png"; nothing where no neighbour is there.
[[nodiscard]] std::optional<QString> sequenceAround(const QString& file);

}  // namespace lumiset::studio
