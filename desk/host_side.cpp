#include "desk/host_side.h"

#include <atomic>

#include "bridge/host_callback.h"
#include "desk/announcer.h"
#include "desk/commands.h"
#include "services/records.h"

namespace panelry::desk
{

namespace
{

constexpr char kComponentId[] = "component_id";
constexpr char kTitle[] = "component_name";

std::atomic<HostSide*> current{nullptr};

void AddText(Fields& fields, const char* key, const void* pData)
{
    if (pData) {
        fields[key] = static_cast<const char*>(pData);
    }
}

}  // namespace

HostSide::HostSide(Announcer& announcer) : m_announcer(announcer)
{
    current = this;
}

HostSide::~HostSide()
{
    current = nullptr;
}

void HostSide::SetTitles(const Titles& titles)
{
    const std::lock_guard guard(m_lock);
    for (const auto& [id, title] : titles) {
        m_titles[id] = title;
    }
}

void HostSide::Callback(std::int32_t nCode, void* pData)
{
    if (HostSide* const host = current) {
        host->OnCallback(nCode, pData);
    }
}

void HostSide::OnCallback(std::int32_t nCode, void* pData)
{
    if (nCode == bridge::kComponentName && pData) {
        AnswerTitle(pData);
        return;
    }
    Fields fields{{"code", nCode}};
    if (nCode == bridge::kCloneHandle) {
        AddText(fields, "window", pData);
    } else if (nCode == 205 || nCode == 206) {
        AddText(fields, "text", pData);
    }  // what another code carries is unknown: only the code is told
    m_announcer.Say("callback", fields);
}

void HostSide::AnswerTitle(void* pData)
{
    StringMap& record = *static_cast<StringMap*>(pData);
    Fields fields{{"code", static_cast<std::int32_t>(bridge::kComponentName)},
                  {kComponentId, record[kComponentId]}};
    {
        const std::lock_guard guard(m_lock);
        const std::optional<std::int32_t> id = ParseNumber(record[kComponentId]);
        const auto title = id ? m_titles.find(*id) : m_titles.end();
        if (title != m_titles.end()) {
            record[kTitle] = title->second;
            fields[kTitle] = title->second;
        }
    }
    m_announcer.Say("callback", fields);
}

}  // namespace panelry::desk
