#pragma once

#include <QString>
#include <string>

namespace panelry
{

/// The market numbers of the two exchange families.
inline constexpr char kShanghai[] = "16";
inline constexpr char kShenzhen[] = "32";

/// The market that a code of six digits belongs to by its first one; Shenzhen for anything else.
const char* MarketOf(const QString& code);

/// A market as people call it; the number itself where there is no name for it.
QString MarketName(const std::string& market);

}  // namespace panelry
