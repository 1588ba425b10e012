#include "benchmarks/runner/History.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iomanip>
#include <map>
#include <sstream>
#include <utility>

#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {
namespace {

constexpr const char* kIntroduction = R"(# Benchmarks, release by release

`scripts/bench --release` measures the version in `CMakeLists.txt` and writes its column anew, the latest
first. The figures are the ratios of [the benchmarks](benchmarks.md), bold where a limit was missed.
Those of two columns can be compared as far as their machines can.

)";

/// One line of the table: what it is about, and the texts of the releases.
struct Line {
  std::string name;
  std::map<std::string, std::string> texts;  // by version
};

/// The table of the page.
struct History {
  std::vector<std::string> versions;
  std::vector<Line> lines;

  Line& line(const std::string& name) {
    const auto found = std::ranges::find(lines, name, &Line::name);
    return found != lines.end() ? *found : lines.emplace_back(Line{name, {}});
  }
};

/// The texts between the bars, without the spaces around them.
std::vector<std::string> cells(const std::string& line) {
  std::vector<std::string> result;
  std::istringstream stream(line.substr(1));
  for (std::string cell; std::getline(stream, cell, '|');) {
    const auto begin = cell.find_first_not_of(' ');
    const auto end = cell.find_last_not_of(' ');
    result.push_back(begin == std::string::npos ? "" : cell.substr(begin, end - begin + 1));
  }
  return result;
}

History readHistory(const std::filesystem::path& page) {
  History history;
  std::ifstream stream(page);
  for (std::string text; std::getline(stream, text);) {
    if (!text.starts_with("| ")) continue;
    const auto row = cells(text);
    if (history.versions.empty()) {
      history.versions.assign(row.begin() + 1, row.end());
      continue;
    }
    Line& line = history.line(row[0]);
    for (std::size_t i = 1; i < row.size(); ++i) line.texts[history.versions.at(i - 1)] = row[i];
  }
  return history;
}

std::string today() {
  const std::chrono::year_month_day date(
      std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now()));
  std::ostringstream text;
  text << static_cast<int>(date.year()) << '-' << std::setfill('0') << std::setw(2)
       << static_cast<unsigned>(date.month()) << '-' << std::setw(2)
       << static_cast<unsigned>(date.day());
  return text.str();
}

/// What is known of one release alone.
History release(const std::string& version, const Machine& machine,
                const std::vector<MeasuredGroup>& groups) {
  History history{{version}, {}};
  history.line("measured on").texts[version] = today();
  history.line("machine").texts[version] =
      machine.processor + ", " + std::to_string(machine.coreCount) + " cores";
  for (const auto& [group, rows] : groups) {
    for (const Row& row : rows) {
      const std::string text = row.valueText();
      history.line(row.work + ", against " + row.against).texts[version] =
          row.isReached() ? text : "**" + text + "**";
    }
  }
  return history;
}

/// What is measured now comes first, in its order.
void append(History& history, const History& earlier) {
  const std::string version = history.versions.front();
  for (const auto& other : earlier.versions) {
    if (other != version) history.versions.push_back(other);
  }
  for (const Line& line : earlier.lines) {
    auto texts = line.texts;
    texts.erase(version);
    const bool isEmpty =
        std::ranges::all_of(texts, [](const auto& text) { return text.second.empty(); });
    if (!isEmpty) history.line(line.name).texts.merge(texts);
  }
}

void writeHistory(std::ostream& page, const History& history) {
  page << kIntroduction << "| |";
  for (const auto& version : history.versions) page << ' ' << version << " |";
  page << "\n|---|";
  for (std::size_t i = 0; i < history.versions.size(); ++i) page << "---|";
  page << '\n';
  for (const Line& line : history.lines) {
    page << "| " << line.name << " |";
    for (const auto& version : history.versions) {
      const auto text = line.texts.find(version);
      page << ' ' << (text == line.texts.end() ? "" : text->second) << " |";
    }
    page << '\n';
  }
}

}  // namespace

void addToHistory(const std::filesystem::path& page, const std::string& version,
                  const Machine& machine, const std::vector<MeasuredGroup>& groups) {
  History history = release(version, machine, groups);
  append(history, readHistory(page));
  std::ofstream stream(page);
  writeHistory(stream, history);
  stream.close();
  if (!stream) fail("cannot write " + page.string());
}

}  // namespace quillbay::bench
