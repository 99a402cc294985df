// The report of a run: what it keeps, its numbers, and the page as a browser shows it.
#include "report/Recording.h"
#include "report/Report.h"

#include "Program.h"

#include <filesystem>
#include <nlohmann/json.hpp>

namespace {

using igh_bus::Recording;
using nlohmann::json;

std::string between(const std::string& text, const std::string& from, const std::string& to) {
  const auto found = text.find(from);
  const auto start = found + from.size();
  return found == std::string::npos ? "" : text.substr(start, text.find(to, start) - start);
}

TEST(Recording, CountsInClassesAndSpansOfFixedNumber) {
  const auto recording = std::make_unique<Recording>(1000000);
  for (int us = 1; us <= 9999; ++us)
    recording->note(us * 1000 + 999, {});
  recording->note(20000000, {});
  const auto& wakeUp = recording->histogram(Recording::wakeUp);
  EXPECT_EQ(wakeUp.percentileUs(0.5), 5000);
  EXPECT_EQ(wakeUp.percentileUs(0.9999), 9999);
  EXPECT_EQ(wakeUp.percentileUs(1), 20000);
  EXPECT_EQ(wakeUp.beyondLimit(), 9001U); // from 1000.999 us on
  EXPECT_EQ(wakeUp.beyond(), 1U);
  EXPECT_EQ(wakeUp.maximumSample(), 9999U);

  std::array<std::uint64_t, 6> totals{};
  for (std::uint64_t cycle = 0; cycle < 10000; ++cycle) {
    totals[1] += cycle % 3 != 0 ? 2 : 0; // two cycles of three
    totals[3] += cycle == 100 || cycle == 102 ? 1 : 0;
    recording->noteErrors(cycle, totals);
    recording->noteClock({cycle, static_cast<std::int64_t>(cycle), 0, 0, 0});
  }
  EXPECT_EQ(recording->end() - recording->begin(), 2048);
  EXPECT_EQ(recording->begin()[0].first, 1U);
  EXPECT_EQ(recording->begin()[0].last, 2U);
  EXPECT_EQ(recording->begin()[0].count, 4U);
  EXPECT_GT(recording->lostErrors(), 0U);
  EXPECT_GT(recording->clockPoints(), 1000U);
  for (std::size_t i = 1; i < recording->clockPoints(); ++i)
    EXPECT_EQ(recording->clock()[i].cycle - recording->clock()[i - 1].cycle, 8U);
}

TEST(Recording, KeepsTheCourseOfTheWholeRunInIntervals) {
  const auto course = std::make_unique<igh_bus::Course>();
  constexpr std::uint64_t CYCLES = 10000;
  const auto late = [](std::uint64_t cycle) { return static_cast<std::int64_t>(cycle * 1000 * (cycle % 2)); };
  for (std::uint64_t cycle = 0; cycle < CYCLES; ++cycle)
    course->note(cycle == 5000 ? 40000000 : late(cycle), {{1, 2, 3, 4, cycle == 7777 ? 99U : 11U}});
  EXPECT_EQ(course->cyclesPerInterval(), 32U);
  EXPECT_EQ(course->slowestCycle(), 7777U);
  std::uint64_t next = 0;
  for (const auto& interval : *course) {
    EXPECT_EQ(interval.first, next);
    next += interval.cycles;
    const bool outlier = interval.first <= 5000 && 5000 < next;
    EXPECT_EQ(interval.maximumNs, outlier ? 40000000 : late(next - 1));
    EXPECT_EQ(interval.maximumCycle, outlier ? 5000 : next - 1);
    EXPECT_EQ(interval.minimumNs, 0);
    EXPECT_EQ(interval.medianNs() <= 512, !outlier); // just half of them are 0
    EXPECT_EQ(interval.meanUs(igh_bus::Costs::send), 4);
    EXPECT_EQ(interval.longestUs, interval.first <= 7777 && 7777 < next ? 99U : 11U);
  }
  EXPECT_EQ(next, CYCLES);
  for (std::int64_t ns = 600; ns < 30000000; ns = ns * 21 / 20) {
    igh_bus::CoarseHistogram histogram;
    for (const auto around : {ns / 2, ns, ns, 2 * ns})
      histogram.add(around);
    EXPECT_NEAR(static_cast<double>(histogram.medianNs(4, 0, 2 * ns)) / static_cast<double>(ns), 1, 1. / 16);
  }
}

// What readers of all kinds need, looked for in the page at three widths and, with the rules for paper in
// force, at that of a sheet: complaints, with the width, or nothing.
const char* const LOOK = R"(
const complaints=[], say=(w,t)=>complaints.push(w+': '+t);
const rgb=c=>(c.match(/[\d.]+/g)||[0,0,0,0]).map(Number);
const linear=v=>(v/=255)<=.04045?v/12.92:((v+.055)/1.055)**2.4;
const light=c=>{const[r,g,b]=rgb(c).map(linear);return .2126*r+.7152*g+.0722*b};
const contrast=(a,b)=>{const x=light(a),y=light(b);return(Math.max(x,y)+.05)/(Math.min(x,y)+.05)};
// As those see them who lack the receptors for red or green.
const seen=(c,m)=>{const[r,g,b]=rgb(c).map(linear);return m.map(q=>Math.cbrt(Math.max(0,q[0]*r+q[1]*g+q[2]*b)))};
const LACKING=[[[.112,.885,-.001],[.113,.890,0],[.004,-.008,1.004]],[[.292,.706,.002],[.292,.708,0],[-.022,.022,1]]];
function look(w,win){
  const d=win.document, all=q=>[...d.querySelectorAll(q)], css=e=>win.getComputedStyle(e);
  if(d.documentElement.scrollWidth>w) say(w,'wider than the screen: '+d.documentElement.scrollWidth);
  const ground=e=>{for(;e;e=e.parentElement){const c=css(e).backgroundColor;if(rgb(c)[3]!==0)return c}return'rgb(255,255,255)'};
  for(const e of all('body *')){
    const own=[...e.childNodes].some(n=>n.nodeType===3&&n.data.trim());
    if(!own||e.closest('script,title,desc,style')) continue;
    const svg=e.closest('svg'), box=e.getBoundingClientRect(), words=e.textContent.slice(0,30);
    const paper=svg?css(svg.querySelector('.frame')).fill:ground(e);
    if(contrast(svg?css(e).fill:css(e).color,paper)<4.5) say(w,'faint: '+words);
    if(parseFloat(css(e).fontSize)<11||svg&&box.height<11) say(w,'small: '+words);
    if(svg&&(box.left<0||box.right>w)) say(w,'cut: '+words);
  }
  for(const l of all('.legend')){
    const marks=[...l.querySelectorAll('path')].map(p=>css(p)), colours=marks.map(s=>s.fill==='none'?s.stroke:s.fill);
    colours.forEach((a,i)=>colours.forEach((b,j)=>{if(i<j&&marks[i].strokeDasharray===marks[j].strokeDasharray&&!marks.some(s=>s.fillOpacity!=='1')) LACKING.forEach(m=>{
      const x=seen(a,m),y=seen(b,m); if(Math.hypot(...x.map((v,k)=>v-y[k]))<.12) say(w,'alike: '+l.textContent+i+j)})}));
  }
  for(const f of all('figure')) if(!f.querySelector('figcaption')||!f.querySelector('svg[role=img]')) say(w,'figure without caption or picture');
  for(const s of all('svg[role=img]')){
    if(s.getAttribute('aria-labelledby').split(' ').some(i=>!d.getElementById(i)||d.getElementById(i).textContent.length<5)) say(w,'picture without words');
    const b=s.getBoundingClientRect(), marks=[...s.querySelectorAll('svg path:not(.grid):not(.mark)')];
    if(b.width<w/2||b.height<60||!marks.some(m=>m.getBBox().width>0||m.getBBox().height>0)) say(w,'empty picture '+s.textContent.slice(0,30));
  }
  for(const t of all('table')) if(!t.caption||t.querySelector('th:not([scope])')||[...t.rows].some(r=>!r.querySelector('th')||r.cells.length!==t.rows[0].cells.length)) say(w,'table without headings');
  let level=0; for(const h of all('h1,h2,h3')){if(h.tagName[1]>level+1) say(w,'heading skips: '+h.textContent); level=+h.tagName[1]}
  const ids=all('[id]').map(e=>e.id); if(new Set(ids).size!==ids.length) say(w,'an id twice');
  if(all('[src],[href],link,script:not([type="application/json"])').length||/url\(|@import/.test(d.querySelector('style').textContent)) say(w,'needs other files');
  const data=JSON.parse(d.getElementById('data').textContent);
  for(const c of all('[data-value]')){const[p,k]=c.dataset.value.split('/');if(Math.abs(c.textContent-data.phases[p][k])>.005) say(w,'not the number of the data: '+c.dataset.value)}
  const dark=light(css(d.body).backgroundColor)<.1; if(dark!==(DARK&&w!==718)) say(w,'dark: '+dark);
  return all('h1,table').map(t=>t.innerText).join('|')+all('figcaption').map(t=>t.innerText).join('|');
}
onload=()=>{let words='';for(const f of document.querySelectorAll('iframe')) words=look(+f.width,f.contentWindow);
  document.body.dataset.seen=[...new Set(complaints)].join('; ')||'nothing to complain of'; document.body.dataset.words=words})";

std::string inFrame(int width, std::string page) {
  for (const auto& [from, to] : {std::pair<std::string, std::string>{"&", "&amp;"}, {"\"", "&quot;"}}) {
    for (std::size_t place = 0; (place = page.find(from, place)) != std::string::npos; place += to.size())
      page.replace(place, from.size(), to);
  }
  return "<iframe width=" + std::to_string(width) + " height=3000 srcdoc=\"" + page + "\"></iframe>\n";
}

std::string browser(const std::string& folder, const std::string& options) {
  const auto shown = runProgram(CHROMIUM " --headless --no-sandbox --disable-gpu --user-data-dir=" + folder +
                                "/profile " + options);
  EXPECT_EQ(shown.status, 0) << shown.err;
  return shown.out;
}

// The report of a run with errors, with what else may be in one, and with names that would break a page.
json richData(const std::string& folder) {
  const auto outcome = ighBus("run --cycles 1500 --sync-to-reference --report " + folder + onMachine);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  auto data = json::parse(readFile(folder + "/report.json"));
  const auto page = readFile(folder + "/report.html");
  EXPECT_EQ(json::parse(between(page, "id=\"data\">", "</script>")), data);
  EXPECT_THAT(outcome.out,
              testing::HasSubstr("\nVerdict: " + data.at("run").at("verdict").get<std::string>()));
  EXPECT_THAT(data.at("run").at("command_line"), testing::EndsWith("servo_drive.xml"));
  EXPECT_LE(data.at("phases").at("wake_up_latency").at("over_period"), data.at("run").at("cycles_left_out"));
  const std::string hostile = "</script><script>'\"&<b>{{data}}<!--";
  data["run"]["errors"] = 45;
  data["slaves"] = json::parse(R"([
    {"position":0,"name":"N","alias":7,"state":"SAFEOP","al_status":27,"al_text":"process data watchdog",
     "answers":true,"lost_ports":[1],"errors":[],"seen":[{"cycle":700,"text":"fell to SAFEOP"},{"cycle":701,"text":"OP again"}]},
    {"position":1,"name":"M","alias":0,"state":"OP","al_status":0,"al_text":"","answers":false,"lost_ports":[],"errors":[]}])");
  data["slaves"][0]["name"] = hostile;
  data["master_seen"] = json::parse(R"([{"cycle":800,"text":"no slave answers"}])");
  auto& wakeUp = data["phases"]["wake_up_latency"];
  for (const char* key : {"max_cycle", "over_period"})
    wakeUp[key] = 1000000000; // a month
  for (int code = 1; code <= 5; ++code) {
    data["errors"].push_back(
        {{"code", code}, {"text", "T"}, {"first_cycle", 700 + code}, {"last_cycle", 900}, {"count", 9}});
    data["slave_errors"].push_back({{"slave", hostile},
                                    {"code", code},
                                    {"text", "kind " + std::to_string(code)},
                                    {"first_cycle", 700},
                                    {"last_cycle", 900},
                                    {"count", 9}});
  }
  for (const char* entry :
       {"Target position", "Velocity demand value", "Position actual value", "Statusword"})
    data["plots"].push_back({{"slave", 5},
                             {"slave_name", hostile},
                             {"entry", entry},
                             {"cycles", {0, 500, 1000}},
                             {"minimum", {-1234567890, nullptr, 0}},
                             {"maximum", {0, 5, 1234567890}}});
  return data;
}

// A table and the end of the page, at many heights of a sheet: no sheet ends with a heading that has no row
// below it, and none begins with the page's last line.
void expectNothingAloneOnPaper(const std::string& folder, std::string page) {
  const auto table = "<div class=\"scroll\"><table>" +
                     between(page, "of the slaves, as they were seen\"><table>", "</div>") + "</div>";
  const auto end = "<div class=\"last\">" + between(page, "<div class=\"last\">", "</section>");
  std::string pieces;
  for (int height = 0; height < 900; height += 60)
    pieces.append("<div style=\"height:")
        .append(std::to_string(height))
        .append("px\"></div>")
        .append(table)
        .append(end);
  const auto from = page.find("<h2 id=\"timing\"");
  page.replace(from, page.find("</main>") - from, pieces + "</section>");
  std::ofstream(folder + "/pieces.html") << page;
  browser(folder,
          "--no-pdf-header-footer --print-to-pdf=" + folder + "/p.pdf file://" + folder + "/pieces.html");
  std::istringstream sheets(runProgram(PDFTOTEXT " -layout " + folder + "/p.pdf -").out);
  int count = 0;
  for (std::string sheet; std::getline(sheets, sheet, '\f'); ++count) {
    sheet.erase(sheet.find_last_not_of(" \n") + 1);
    EXPECT_THAT(sheet, testing::Not(testing::StartsWith("igh_bus ")));
    EXPECT_THAT(sheet, testing::Not(testing::ContainsRegex("(as they were seen|trouble|value)$")));
  }
  EXPECT_GT(count, 15);
}

TEST(Report, PageIsReadByAnyoneOnAnyScreenAndOnPaper) {
  const auto folder = scratch("report");
  std::remove(folder.c_str());
  const auto data = richData(folder);
  for (const auto& [name, phase] : data.at("phases").items()) {
    std::uint64_t sum = phase.at("beyond_classes").get<std::uint64_t>();
    for (const auto& entry : phase.at("classes"))
      sum += entry.at(1).get<std::uint64_t>();
    EXPECT_EQ(sum, 1500U) << name;
  }
  EXPECT_EQ(data.at("clock").size(), 1U);
  EXPECT_EQ(data.at("states").back().at("states"), "OP");
  const auto page = igh_bus::reportPage(nlohmann::ordered_json::parse(data.dump()));
  std::ofstream(folder + "/rich.html") << page;
  auto onPaper = page;
  onPaper.replace(onPaper.find("@media print"), 12, "@media all");
  for (const bool dark : {false, true}) {
    if (std::string(CHROMIUM).empty())
      continue;
    std::ofstream(folder + "/watched.html")
        << "<body><script>const DARK=!!" << dark << ";" << LOOK << "</script>" << inFrame(390, page)
        << inFrame(768, page) << inFrame(718, onPaper) << inFrame(1280, page);
    const auto shown =
        browser(folder, "--blink-settings=preferredColorScheme=" + std::to_string(dark ? 0 : 1) +
                            " --dump-dom file://" + folder + "/watched.html");
    EXPECT_EQ(between(shown, "data-seen=\"", "\""), "nothing to complain of");
    const auto words = between(shown, "data-words=\"", "\"");
    for (const char* word :
         {"kind 5\t9\t700\t900", "SAFEOP\t0x001B process data watchdog\tyes\t1", "OP\t\tno\tnone",
          "With errors: in OP at the end", "Target position and Position actual value",
          "\t700\tfell to SAFEOP", "master\t800\tno slave answers", "|Velocity demand value."})
      EXPECT_THAT(words, testing::HasSubstr(word));
  }
  if (!std::string(CHROMIUM).empty()) {
    browser(folder, "--print-to-pdf=" + folder + "/p.pdf file://" + folder + "/rich.html");
    const auto paper = readFile(folder + "/p.pdf");
    const auto count = [&](const std::string& what) {
      std::size_t number = 0;
      for (auto place = paper.find(what); place != std::string::npos; place = paper.find(what, place + 1))
        ++number;
      return number;
    };
    EXPECT_EQ(count("/S /Table"), 6U);
    EXPECT_GE(count("/Alt "), 10U);
    EXPECT_LE(count("/Type /Page\n"), 9U);
    if (!std::string(PDFTOTEXT).empty())
      expectNothingAloneOnPaper(folder, page);
  }
  std::filesystem::remove_all(folder);
}

} // namespace
