#include <algorithm>
#include <array>
#include <cstdio>

#include "boards/decoded.h"
#include "rehearsal/reports/board_maps.h"
#include "rehearsal/reports/html_parts.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

constexpr std::size_t kShownBoards = 24;
constexpr std::size_t kDrawnDevices = 16;  // of devices, on all boards together
constexpr std::size_t kShownDifferences = 200;
constexpr std::size_t kShownAreas = 100;
constexpr std::size_t kShownHexRows = 128;
constexpr std::size_t kHexRowLength = 8;
constexpr std::array<std::string_view, 6> kTints = {"t0", "t1", "t2", "t3", "t4", "t5"};

std::string HexOffset(std::size_t offset) {
  std::array<char, 24> text{};
  std::snprintf(text.data(), text.size(), "%04zX", offset);
  return text.data();
}

std::string HexRange(std::size_t offset, std::size_t length) {
  return HexOffset(offset) + "–" + HexOffset(offset + std::max<std::size_t>(length, 1) - 1);
}

/// Areas that begin in a row, beside it: the names say what the tints show.
std::string AreasFrom(const MapRow& row, const std::vector<Area>& areas) {
  std::string text;
  std::size_t count = 0;
  for (const Area& area : areas) {
    if (area.offset < row.offset || area.offset >= row.offset + row.length) continue;
    if (++count <= 2) text += (text.empty() ? "" : ", ") + Shortened(area.name, 24);
  }
  return count > 2 ? text + " and " + Grouped(count - 2) + " more" : text;
}

Element MapStrip(const MapRow& row, std::size_t rowLength) {
  std::vector<Bar> bars;
  std::size_t changed = 0;
  for (const MapRun& run : row.runs) {
    const std::size_t begin = run.offset - row.offset;
    bars.push_back({begin, run.length, run.area ? kTints[*run.area % kTints.size()] : "free"});
    if (!run.isChanged) continue;
    bars.push_back({begin, run.length, "changed", 7});
    changed += run.length;
  }
  return Strip(rowLength, bars, changed == 0 ? "unchanged" : Count(changed, "changed byte"));
}

Element MemoryMap(std::string_view title, const Bytes& bytes, const Bytes& other,
                  const std::vector<Area>& areas, std::size_t rowLength) {
  Element figure("figure");
  figure.Add(Element("figcaption").Text(std::string(title) + ", " + Count(bytes.size(), "byte")));
  Element body("tbody");
  for (const MapRow& row : MapRows(bytes, other, areas, rowLength)) {
    const bool isMore = row.length > rowLength;
    Element line("tr");
    body.Add(line.Add(Element("th")
                          .Set("scope", "row")
                          .Text(isMore ? HexRange(row.offset, row.length) : HexOffset(row.offset)))
                 .Add(Element("td").Class(isMore ? "more" : "").Add(MapStrip(row, rowLength)))
                 .Add(CellOfText(AreasFrom(row, areas), "areas")));
  }
  Element table("table");
  return figure.Add(table.Class("map").Add(HeadRow({"Offset", "Bytes", "From here"})).Add(body));
}

std::size_t ChangedIn(const DeviceImage& device, const Area& area) {
  std::size_t changed = 0;
  for (std::size_t i = area.offset; i < std::min(area.offset + area.length, device.after.size()); ++i)
    changed += i >= device.before.size() || device.before[i] != device.after[i] ? 1 : 0;
  return changed;
}

Element AreaTable(const DeviceImage& device) {
  const std::string_view noun = device.device == "SDR" ? "record" : "area";
  Element body("tbody");
  const std::size_t shown = std::min(device.areasAfter.size(), kShownAreas);
  for (std::size_t i = 0; i < shown; ++i) {
    const Area& area = device.areasAfter[i];
    Element row("tr");
    Element name("th");
    name.Set("scope", "row")
        .Add(Element("span").Class("key " + std::string(kTints[i % kTints.size()])))
        .Text(" " + area.name);
    body.Add(row.Add(name)
                 .Add(CellOfText(HexRange(area.offset, area.length), "number"))
                 .Add(CellOfText(Grouped(area.length), "number"))
                 .Add(CellOfText(Grouped(ChangedIn(device, area)), "number")));
  }
  Element table("table");
  Element fold = Foldable(Element("span").Text(Count(device.areasAfter.size(), noun) + " afterwards"), false);
  fold.Add(table.Class("plain").Add(HeadRow({"Name", "Bytes at", "Length", "Changed"})).Add(body));
  AddRest(fold, device.areasAfter.size(), shown, noun);
  return fold;
}

/// "41 42 --": changed bytes marked, missing ones as dashes.
Element HexCell(const Bytes& bytes, const Bytes& other, std::size_t offset) {
  const auto at = [](const Bytes& image, std::size_t i) {
    return i < image.size() ? HexByte(image[i]).substr(0, 2) : std::string("--");
  };
  Element code("code");
  for (std::size_t i = offset; i < offset + kHexRowLength;) {
    const bool isSame = at(bytes, i) == at(other, i);
    std::string run;
    if (i > offset) code.Text(" ");
    for (; i < offset + kHexRowLength && (at(bytes, i) == at(other, i)) == isSame; ++i)
      run += (run.empty() ? "" : " ") + at(bytes, i);
    if (isSame)
      code.Text(run);
    else
      code.Add(Element("mark").Text(run));
  }
  return Element("td").Add(code);
}

Element HexTable(const DeviceImage& device) {
  Element body("tbody");
  std::size_t rows = 0;
  const std::size_t size = std::max(device.before.size(), device.after.size());
  for (std::size_t offset = 0; offset < size; offset += kHexRowLength) {
    const auto at = [offset](const Bytes& bytes) { return boards::Part(bytes, offset, kHexRowLength); };
    const boards::ByteView before = at(device.before);
    const boards::ByteView after = at(device.after);
    if (std::equal(before.begin(), before.end(), after.begin(), after.end())) continue;
    if (++rows > kShownHexRows) continue;
    Element row("tr");
    body.Add(row.Add(Element("th").Set("scope", "row").Text(HexOffset(offset)))
                 .Add(HexCell(device.before, device.after, offset))
                 .Add(HexCell(device.after, device.before, offset)));
  }
  Element table("table");
  Element fold = Foldable(Element("span").Text(Count(ChangedBytes(device), "changed byte")), false);
  fold.Add(table.Class("hex").Add(HeadRow({"Offset", "Before", "After"})).Add(body));
  AddRest(fold, rows, std::min(rows, kShownHexRows), "row");
  return fold;
}

Element DeviceView(const DeviceImage& device, bool hasMap) {
  const std::size_t rowLength = MapRowLength(std::max(device.before.size(), device.after.size()));
  Element maps("div");
  maps.Class("maps")
      .Add(MemoryMap("Before", device.before, device.after, device.areasBefore, rowLength))
      .Add(MemoryMap("After", device.after, device.before, device.areasAfter, rowLength));
  Element view("div");
  view.Class("device").Add(Element("h4").Text(device.device));
  if (!hasMap) return view.Add(Aside("Its map is not drawn: there are many.")).Add(HexTable(device));
  view.Add(Aside("A row is " + std::to_string(rowLength) +
                 " bytes. Tints are areas or records, bars changed bytes."))
      .Add(maps);
  if (!device.areasAfter.empty()) view.Add(AreaTable(device));
  return view.Add(HexTable(device));
}

Element DifferenceTable(const BoardAfter& board) {
  Element body("tbody");
  const std::size_t shown = std::min(board.differences.size(), kShownDifferences);
  for (std::size_t i = 0; i < shown; ++i) {
    const boards::Difference& difference = board.differences[i];
    Element row("tr");
    body.Add(row.Add(Element("th").Set("scope", "row").Text(difference.part))
                 .Add(CellOfText(difference.group))
                 .Add(CellOfText(DifferenceWords(difference))));
  }
  Element table("table");
  Element fold = Foldable(Element("span").Text(Count(board.differences.size(), "change")),
                          board.differences.size() <= 24);
  fold.Add(table.Class("plain changes").Add(HeadRow({"Part", "Area or record", "Change"})).Add(body));
  AddRest(fold, board.differences.size(), shown, "change");
  return fold;
}

Element BoardView(const Report& report, std::size_t index, const std::vector<std::size_t>& roads,
                  std::size_t& maps) {
  const BoardAfter& board = report.boards[index];
  Element view("article");
  view.Set("id", "board-" + BoardName(index))
      .Add(Element("h3").Text("Board " + BoardName(index)))
      .Add(Element("p").Text((roads.empty() ? "" : "Left by road " + Ranges(FromOne(roads)) + ": ") +
                             ChangeSummary(board) + "."));
  if (!board.differences.empty()) view.Add(DifferenceTable(board));
  for (const DeviceImage& device : board.devices) view.Add(DeviceView(device, maps++ < kDrawnDevices));
  return view;
}

}  // namespace

Element BoardsChapter(const Report& report) {
  std::vector<std::vector<std::size_t>> roads(report.boards.size());
  for (std::size_t i = 0; i < report.roads.size(); ++i)
    if (!report.roads[i].joins && report.roads[i].run.board < roads.size())
      roads[report.roads[i].run.board].push_back(i);
  Element chapter = Chapter("boards", "Boards");
  chapter.Add(Aside("What the board holds afterwards, against what it held before."));
  const std::size_t shown = std::min(report.boards.size(), kShownBoards);
  std::size_t maps = 0;
  for (std::size_t i = 0; i < shown; ++i) chapter.Add(BoardView(report, i, roads[i], maps));
  AddRest(chapter, report.boards.size(), shown, "board");
  return chapter;
}

}  // namespace varnok::rehearsal
