#include "desk/inspect.h"

#include <algorithm>
#include <iomanip>
#include <ostream>

#include "desk/abi_note.h"
#include "desk/inspect_modules.h"
#include "desk/inspect_settings.h"

namespace fs = std::filesystem;

namespace panelry::desk
{

namespace
{

constexpr char kModuleDirectory[] = "adsplugins";

void Print(const std::vector<Finding>& findings, std::ostream& out)
{
    if (findings.empty()) {
        out << "  nothing is there\n";
    }
    std::size_t widest = 0;
    for (const Finding& finding : findings) {
        widest = std::max(widest, finding.subject.size());
    }
    for (const Finding& finding : findings) {
        out << (finding.isFault ? "! " : "  ") << std::left << std::setw(static_cast<int>(widest))
            << finding.subject << "  " << std::setw(7) << finding.verdict << "  " << finding.text << '\n';
    }
}

}  // namespace

bool Inspection::HasFaults() const
{
    const auto isFault = [](const Finding& finding) { return finding.isFault; };
    return std::any_of(moduleFindings.begin(), moduleFindings.end(), isFault) ||
           std::any_of(settingFindings.begin(), settingFindings.end(), isFault);
}

Inspection Inspect(const fs::path& directory)
{
    // Without a slash at its end, which would make the directory its own parent.
    const fs::path given = (fs::absolute(directory) / "").lexically_normal().parent_path();
    const bool isHost = fs::exists(given / kModuleDirectory);
    Inspection inspection;
    inspection.modules = isHost ? given / kModuleDirectory : given;
    inspection.host = inspection.modules.parent_path();
    inspection.moduleFindings =
        InspectModules(inspection.modules, inspection.host, ReadAbiNote("/proc/self/exe").value_or(""));
    inspection.settingFindings = InspectSettings(inspection.host);
    return inspection;
}

void Print(const Inspection& inspection, std::ostream& out)
{
    out << "modules in " << inspection.modules.string() << '\n';
    Print(inspection.moduleFindings, out);
    out << "settings in " << inspection.host.string() << '\n';
    Print(inspection.settingFindings, out);
    out << (inspection.HasFaults() ? "! marks what to look at" : "no fault found") << '\n';
    out.flush();
}

}  // namespace panelry::desk
