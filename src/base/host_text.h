#pragma once

#include <string>
#include <string_view>

/// Texts as a host sends them: display names, hints and table cells stand in the host's own code page. They
/// are converted to UTF-8 once, where they enter the library's maps.
///
/// Threading: HostTextToUtf8() from any thread. SetHostEncoding() belongs to start-up, before the first text.
namespace panelry
{

/// The code page until SetHostEncoding() says otherwise. A superset of GBK and GB 2312.
inline constexpr char kDefaultHostEncoding[] = "GB18030";

/// The code page of the host by its codec's name ("GB18030", "Big5", "UTF-8"), from section "system", key
/// "host_encoding" of the settings; see ModuleBase::SetConfigTables(). An empty or unknown name, and a code
/// page that doesn't keep ASCII as it is (UTF-16), change nothing and return false.
bool SetHostEncoding(std::string_view codecName);

/// `bytes` in UTF-8. Never fails: each malformed or cut sequence becomes U+FFFD and what follows is read on,
/// so a broken name stays a name.
std::string HostTextToUtf8(std::string_view bytes);

}  // namespace panelry
