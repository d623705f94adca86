// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>

#include "host/headless/json.h"
#include "session/session_fixture.h"
#include "targets.h"

namespace quellar::tests::fuzz {

using host::headless::Json;

namespace {

/// So many lines are fed; more would only make it slow.
constexpr std::size_t kMostLines = 24;

void furnish(ScriptedSession& session) {
  session.applications.installed = {{"org.example.Camera.desktop", "Camera"}, {"org.example.Maps.desktop", "Maps"}};
  session.preferences.domains["com.vantorick.quellar2"] = {
      {"StatusBar_Defaults", platform::Dictionary{{"usesCustomTimeFormatter", true}, {"usesCustomCarrierText", 1}}},
      {"Icons_Defaults", platform::Dictionary{{"userRequestsCustomLabelColor", true}}},
      {"Dock_Defaults", "no dictionary"}};
}

/// Checks the lines that one line of input gave.
void check(const Lines& lines) {
  demand(!lines.empty(), "a line is answered");
  for (const std::string& line : lines) {
    const Json json = Json::parse(line, nullptr, false);
    demand(json.is_object() && dump(json) == line, "an answer is one line of JSON: " + line);
    const bool last = &line == &lines.back();
    demand(json.contains("event") != last, "events stand before the closing line: " + line);
    demand((json.contains("ok") || json.contains("error")) == last, "there is one closing line: " + line);
  }
}

}  // namespace

void session(std::string_view bytes) {
  // The second session is told the same, each line written anew from what was read of it.
  ScriptedSession first;
  ScriptedSession second;
  furnish(first);
  furnish(second);
  for (std::size_t count = 0; count < kMostLines && !bytes.empty(); ++count) {
    const std::string_view line = bytes.substr(0, bytes.find('\n'));
    bytes.remove_prefix(std::min(line.size() + 1, bytes.size()));
    const auto before = first.preferences.domains;
    const auto pages = first.session.host().navigation().viewControllers();
    const Lines answer = first.feed(line);
    check(answer);
    if (answer.back().starts_with(R"({"error")")) {
      demand(answer.size() == 1, "a line that fails does nothing");
      demand(first.preferences.domains == before, "a line that fails stores nothing");
      demand(first.session.host().navigation().viewControllers() == pages, "a line that fails leaves the page");
    }
    const auto read = host::headless::parseJson(line);
    const Json* const json = std::get_if<Json>(&read);
    // Written anew a line may be longer: a control character is one byte and its escape six.
    const std::string anew = json ? dump(*json) : std::string(line);
    const bool fits = line.size() <= host::headless::kLongestLine && anew.size() <= host::headless::kLongestLine;
    const Lines again = second.feed(fits ? anew : line);
    demand(again == answer, "a line that is written anew does the same: " + answer.back() + " / " + again.back());
  }
  demand(first.preferences.domains == second.preferences.domains, "the same lines store the same");
}

}  // namespace quellar::tests::fuzz
