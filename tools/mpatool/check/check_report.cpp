#include "mpatool/check/check_report.h"

#include "mpatool/command_line/time_parse.h"
#include "mpatool/output/count_text.h"
#include "mpatool/output/shown_text.h"
#include "mpatool/stream/frame_chain.h"
#include "os/paths.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string_view>
#include <vector>

namespace mpatool {

namespace {

using Json = nlohmann::ordered_json;

struct KindCount {
    FindingKind kind;
    std::int64_t count;
};

/// How often each kind was found; kinds of one name together.
std::vector<KindCount> Counts(const FindingList& findings) {
    std::vector<KindCount> counts;
    for (std::size_t i = 0; i < kFindingKinds; ++i) {
        const auto kind = static_cast<FindingKind>(i);
        const std::int64_t count = findings.Count(kind);
        if (count == 0)
            continue;
        if (!counts.empty() && std::string_view(FindingName(counts.back().kind)) == FindingName(kind))
            counts.back().count += count;
        else
            counts.push_back({kind, count});
    }
    return counts;
}

std::string Summary(const StreamCheckResult& result) {
    std::string text;
    for (const auto& [kind, count] : Counts(result.findings))
        if (IsDamage(kind))
            text += (text.empty() ? "damaged: " : ", ") + FindingCountText(kind, count);
    if (text.empty())
        text = "no damage";
    return text + " (" + CountOf(result.frames, "frame") + ", " +
           FormatTime(result.SecondsOf(result.frames)) + ")";
}

std::string Padded(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

/// A name for programs: "lost-sync".
std::string Identifier(std::string name) {
    std::ranges::replace(name, ' ', '-');
    std::ranges::transform(name, name.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return name;
}

Json FindingObject(const Finding& finding) {
    return {{"kind", Identifier(FindingName(finding.kind))},
            {"damage", IsDamage(finding.kind)},
            {"offset", finding.offset},
            {"end", finding.end},
            {"seconds", finding.seconds},
            {"bytes", finding.bytes},
            {"frames", finding.frames},
            {"places", finding.places},
            {"text", FindingText(finding)}};
}

} // namespace

std::string ReadableCheck(const std::wstring& file, const StreamCheckResult& result) {
    std::string text = ShownPath(file) + ": " + Summary(result) + "\n";
    const std::size_t width = FormatCount(result.fileBytes).size();
    for (const Finding& finding : result.findings.Sorted())
        text += "  byte " + Padded(FormatCount(finding.offset), width) + "  " +
                Padded(FormatTime(finding.seconds), 9) + "  " + FindingText(finding) + "\n";
    if (result.findings.Unlisted() > 0)
        text += "  and " + FormatCount(result.findings.Unlisted()) + " more, which are not listed\n";
    return text;
}

Json JsonCheck(const std::wstring& file, const StreamCheckResult& result) {
    Json findings = Json::array();
    for (const Finding& finding : result.findings.Sorted())
        findings.push_back(FindingObject(finding));
    Json counts = Json::object();
    for (const auto& [kind, count] : Counts(result.findings))
        counts[Identifier(FindingName(kind))] = count;
    return {{"file", os::NarrowToUtf8(file)},
            {"bytes", result.fileBytes},
            {"damaged", result.findings.HasDamage()},
            {"stream", FormatText(result.format)},
            {"index", result.hasIndex},
            {"frames", result.frames},
            {"seconds", result.SecondsOf(result.frames)},
            {"counts", counts},
            {"findings", findings},
            {"unlisted", result.findings.Unlisted()}};
}

} // namespace mpatool
