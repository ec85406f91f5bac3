// The HTML report: the page's markup, its style and script, and the data the script steps through.
#include "html_report.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <ctime>

#include "platform/headless/svg_render.h"
#include "platform/render.h"
#include "results.h"
#include "results/Locate.h"

namespace vkcompare {

namespace {

// The colours of the rectangles' colour indexes: 1 red, 2 yellow, 3 green.
const char* rectangleRgb(int colourIndex) {
  switch (colourIndex) {
    case 1: return "#ff0000";
    case 2: return "#ffff00";
    case 3: return "#00ff00";
    default: return "#ffffff";
  }
}

void appendNumber(std::string& out, double v) {
  char text[32];
  std::snprintf(text, sizeof text, "%.10g", v);
  out += text;
}

Json windowArray(const DrawingWindow& w) { return Json::array({w.minX, w.minY, w.maxX, w.maxY}); }

// One side's picture: the drawing on the host's background, then every rectangle placed on this side.
void appendView(std::string& out, const char* id, const platform::Database* db, const CComparisonState& state,
                bool sourceSide, Json& viewWindow) {
  std::string drawing;
  platform::Extents3d drawn;
  if (db) platform::renderSpaceSvg(*db, drawing, drawn);
  DrawingWindow w{0, 0, 100, 100};
  if (!drawn.isEmpty()) {
    const double margin = std::max({drawn.max.x - drawn.min.x, drawn.max.y - drawn.min.y, 1e-6}) * 0.05;
    w = {drawn.min.x - margin, drawn.min.y - margin, drawn.max.x + margin, drawn.max.y + margin};
  }
  viewWindow = windowArray(w);
  out += "<svg id=\"";
  out += id;
  out += "\" class=\"view\" xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"";
  appendNumber(out, w.minX);
  out += ' ';
  appendNumber(out, -w.maxY);
  out += ' ';
  appendNumber(out, w.maxX - w.minX);
  out += ' ';
  appendNumber(out, w.maxY - w.minY);
  out += "\">\n";
  out += drawing;
  out += "<g class=\"rects\" transform=\"scale(1,-1)\" fill=\"none\">\n";
  for (std::size_t i = 0; i < state.differences.size(); ++i) {
    const CDiffType& r = *state.differences[i];
    const int colour = RectangleColour(r.kind);
    if (colour == 0 || (r.kind == kDiffDeleted) != sourceSide) continue;
    const DrawingWindow box = DifferenceRectangle(r, sourceSide ? state.sourceOffset : state.destinationOffset);
    out += "<rect id=\"r" + std::to_string(i) + "\" class=\"rc\" x=\"";
    appendNumber(out, box.minX);
    out += "\" y=\"";
    appendNumber(out, box.minY);
    out += "\" width=\"";
    appendNumber(out, box.maxX - box.minX);
    out += "\" height=\"";
    appendNumber(out, box.maxY - box.minY);
    out += "\" stroke=\"";
    out += rectangleRgb(colour);
    out += "\" vector-effect=\"non-scaling-stroke\"/>\n";
  }
  out += "</g>\n</svg>\n";
}

// The result tree: each range with its members, each member a record's text; records no range holds last.
void appendTree(std::string& out, const CComparisonState& state) {
  std::vector<bool> listed(state.differences.size(), false);
  const auto item = [&](std::size_t record) {
    const CDiffType& r = *state.differences[record];
    listed[record] = true;
    out += "<li class=\"m k" + std::to_string(r.kind) + "\" data-i=\"" + std::to_string(record) + "\">";
    out += HtmlEscape(r.text);
    out += "</li>\n";
  };
  for (std::size_t i = 0; i < state.ranges.ranges.size(); ++i) {
    std::size_t count = 0;
    for (const CRangeMember& m : state.ranges.members)
      if (m.range == static_cast<int>(i + 1) && m.record < state.differences.size()) ++count;
    out += "<details open><summary>" + HtmlEscape(state.ranges.ranges[i].label) + " <span class=\"n\">(" +
           std::to_string(count) + ")</span></summary><ul>\n";
    for (const CRangeMember& m : state.ranges.members)
      if (m.range == static_cast<int>(i + 1) && m.record < state.differences.size()) item(m.record);
    out += "</ul></details>\n";
  }
  bool rest = false;
  for (std::size_t i = 0; i < listed.size(); ++i) {
    if (listed[i]) continue;
    if (!rest) out += "<details open><summary>&#8212;</summary><ul>\n";
    rest = true;
    item(i);
  }
  if (rest) out += "</ul></details>\n";
}

std::string countText(const CComparisonState& state) {
  switch (state.lastOutcome) {
    case RunOutcome::Identical: return "文件完全相同";
    case RunOutcome::Different: {
      char text[96];
      std::snprintf(text, sizeof text, "发现有(%zu)个实体不同。", state.differences.size());
      return text;
    }
    case RunOutcome::NothingToCompare: return "源图纸当前空间没有可比较的实体";
    default: return state.lastError.empty() ? std::string("比较失败") : "比较失败: " + state.lastError;
  }
}

constexpr const char* kStyle = R"CSS(
*{box-sizing:border-box}
html,body{margin:0;height:100%;font:13px/1.4 "Noto Sans CJK SC","Noto Sans",sans-serif;background:#1b2027;color:#dde}
body{display:flex;flex-direction:column}
header{padding:6px 10px;background:#2b323c;display:flex;flex-wrap:wrap;gap:4px 18px;align-items:center}
header .f{font-weight:bold}
header .count{color:#ffd479}
header button{background:#3b4654;color:#eef;border:1px solid #566;padding:2px 10px;cursor:pointer}
#msg{color:#ff9c9c}
main{flex:1;display:flex;min-height:0}
#tree{width:300px;overflow:auto;padding:4px 6px;border-right:1px solid #333;background:#20262e}
#tree summary{cursor:pointer;color:#cde}
#tree ul{margin:0;padding-left:16px;list-style:none}
#tree li{cursor:pointer;padding:1px 3px;border-left:4px solid transparent;white-space:nowrap;overflow:hidden;text-overflow:ellipsis}
#tree li.k1{border-color:#00ff00}#tree li.k2{border-color:#ff0000}#tree li.k3{border-color:#ffff00}
#tree li.cur{background:#3b4654;color:#fff}
.pane{flex:1;display:flex;flex-direction:column;min-width:0}
.pane h2{margin:0;padding:2px 8px;font-size:12px;font-weight:normal;background:#262d36;white-space:nowrap;overflow:hidden;text-overflow:ellipsis}
svg.view{flex:1;width:100%;min-height:0;background:#212830;cursor:grab;display:block;overflow:hidden}
svg.view .rc{opacity:.35;stroke-width:1}
svg.view .rc.cur{opacity:1;stroke-width:3}
body.only svg.view g[data-h]{display:none}
body.only svg.view g[data-h].named{display:inline}
)CSS";

constexpr const char* kScript = R"JS(
(function(){
'use strict';
var D=JSON.parse(document.getElementById('vk-data').textContent);
var R=D.result.records,n=R.length,cur=-1;
var so=D.result.offsets.source,de=D.result.offsets.destination,dx=de[0]-so[0],dy=de[1]-so[1];
var svg={s:document.getElementById('svgS'),d:document.getElementById('svgD')};
var win={s:D.views.source.slice(),d:D.views.destination.slice()};
var msg=document.getElementById('msg'),pos=document.getElementById('pos');
function show(k){var w=win[k];svg[k].setAttribute('viewBox',w[0]+' '+(-w[3])+' '+(w[2]-w[0])+' '+(w[3]-w[1]));}
function other(k){var s=k==='s'?1:-1,w=win[k],o=k==='s'?'d':'s';win[o]=[w[0]+s*dx,w[1]+s*dy,w[2]+s*dx,w[3]+s*dy];show(o);}
function arr(p){return [p.min[0],p.min[1],p.max[0],p.max[1]];}
function locate(i){
  var r=R[i];cur=i;
  win.s=arr(r.locate.source);win.d=arr(r.locate.destination);show('s');show('d');
  var old=document.querySelectorAll('.cur');for(var j=0;j<old.length;j++)old[j].classList.remove('cur');
  var rc=document.getElementById('r'+i);if(rc){rc.classList.add('cur');rc.parentNode.appendChild(rc);}
  var li=document.querySelector('#tree li[data-i="'+i+'"]');if(li){li.classList.add('cur');if(li.scrollIntoView)li.scrollIntoView({block:'nearest'});}
  pos.textContent=(i+1)+'/'+n+'  '+r.text;
  document.body.setAttribute('data-current',String(i));
}
function step(d){
  if(n===0)return;
  msg.textContent='';
  if(cur>n-1)cur=n-1;
  var end=d>0?n-1:0;
  if(cur===-1)cur=0;
  else if(cur===end)msg.textContent=(d>0?'已到最后一个不同点(共':'已到第一个不同点(共')+n+'不同点)';
  else cur+=d;
  locate(cur);
}
document.getElementById('next').onclick=function(){step(1);};
document.getElementById('prev').onclick=function(){step(-1);};
document.getElementById('only').onchange=function(e){document.body.classList.toggle('only',e.target.checked);};
document.addEventListener('keydown',function(e){
  if(e.ctrlKey||e.altKey||e.metaKey)return;
  if(e.key==='n'||e.key==='ArrowRight'||e.key==='ArrowDown'){step(1);e.preventDefault();}
  else if(e.key==='p'||e.key==='ArrowLeft'||e.key==='ArrowUp'){step(-1);e.preventDefault();}
});
document.getElementById('tree').addEventListener('click',function(e){
  var li=e.target.closest('li[data-i]');if(li){msg.textContent='';locate(+li.getAttribute('data-i'));}
});
// The entities the records name, for showing the differences only.
var named={s:new Set(),d:new Set()};
R.forEach(function(r){if(r.source_handle)named.s.add(r.source_handle);if(r.destination_handle)named.d.add(r.destination_handle);});
['s','d'].forEach(function(k){
  var gs=svg[k].querySelectorAll('g[data-h]');
  for(var j=0;j<gs.length;j++)if(named[k].has(gs[j].getAttribute('data-h')))gs[j].classList.add('named');
  var el=svg[k],drag=null;
  function at(e){var p=el.createSVGPoint();p.x=e.clientX;p.y=e.clientY;var m=el.getScreenCTM();return m?p.matrixTransform(m.inverse()):p;}
  el.addEventListener('wheel',function(e){
    e.preventDefault();var p=at(e),x=p.x,y=-p.y,f=e.deltaY>0?1.25:0.8,w=win[k];
    win[k]=[x+(w[0]-x)*f,y+(w[1]-y)*f,x+(w[2]-x)*f,y+(w[3]-y)*f];show(k);other(k);
  },{passive:false});
  el.addEventListener('mousedown',function(e){drag={p:at(e),w:win[k].slice()};e.preventDefault();});
  window.addEventListener('mousemove',function(e){
    if(!drag)return;win[k]=drag.w;show(k);var p=at(e),mx=p.x-drag.p.x,my=-(p.y-drag.p.y);
    win[k]=[drag.w[0]-mx,drag.w[1]-my,drag.w[2]-mx,drag.w[3]-my];show(k);other(k);
  });
  window.addEventListener('mouseup',function(){drag=null;});
});
// #next=K steps K times at load, #record=I locates record I, #keys=npn presses those keys: links to a
// record, and a way to try the page.
var h=/^#(next|record|keys)=(\d+|[np]+)$/.exec(location.hash);
if(h&&h[1]==='next'){for(var s=0;s<+h[2];s++)step(1);}
else if(h&&h[1]==='record'&&+h[2]<n)locate(+h[2]);
else if(h&&h[1]==='keys')h[2].split('').forEach(function(k){document.dispatchEvent(new KeyboardEvent('keydown',{key:k}));});
document.body.setAttribute('data-ready','1');
// How long the page took to be ready, from the start of its loading.
document.body.setAttribute('data-ready-ms',String(Math.round(performance.now())));
})();
)JS";

}  // namespace

std::string HtmlEscape(std::string_view text) {
  // What XML text needs is what HTML text and quoted attributes need; bytes that are not UTF-8 become U+FFFD.
  std::string out;
  out.reserve(text.size());
  headless::appendXmlText(out, text);
  return out;
}

std::string ScriptSafeJson(std::string_view json) {
  std::string out;
  out.reserve(json.size());
  for (std::size_t i = 0; i < json.size(); ++i) {
    if (json.substr(i, 2) == "</") {
      out += "<\\/";
      ++i;
    } else if (json.substr(i, 4) == "<!--") {
      // Would put the script element's text in a state where its end tag no longer ends it.
      out += "\\u003c";
    } else {
      out += json[i];
    }
  }
  return out;
}

std::string FolderIndexPage(const std::string& sourceFolder, const std::string& destinationFolder,
                            const std::vector<IndexEntry>& entries, const std::string& total, const std::string& date) {
  std::string out =
      "<!DOCTYPE html>\n<html lang=\"zh\">\n<head>\n<meta charset=\"utf-8\">\n<title>" +
      HtmlEscape(sourceFolder + " ↔ " + destinationFolder) +
      "</title>\n<style>body{font:13px/1.5 \"Noto Sans CJK SC\",sans-serif;background:#1b2027;color:#dde;margin:12px}"
      "a{color:#9cf}td{padding:1px 10px}.different td:first-child{color:#ffd479}.trouble td:first-child{color:#ff6b6b}"
      ".deleted td:first-child{color:#ffff00}.added td:first-child{color:#ff4040}</style>\n</head>\n<body>\n<h1>" +
      HtmlEscape(sourceFolder) + " ↔ " + HtmlEscape(destinationFolder) + "</h1>\n<p id=\"date\">" + HtmlEscape(date) +
      "</p>\n<table>\n";
  for (const IndexEntry& e : entries) {
    out += "<tr class=\"" + HtmlEscape(e.outcome) + "\"><td>" + HtmlEscape(e.outcome) + "</td><td>";
    if (e.report.empty()) {
      out += HtmlEscape(e.relative);
    } else {
      // The link is a relative URL: every byte but the unreserved ones and '/' percent-encoded.
      std::string href;
      for (unsigned char c : e.report) {
        if (std::isalnum(c) || c == '-' || c == '_' || c == '.' || c == '~' || c == '/') {
          href += static_cast<char>(c);
        } else {
          char hex[4];
          std::snprintf(hex, sizeof hex, "%%%02X", c);
          href += hex;
        }
      }
      out += "<a href=\"" + href + "\">" + HtmlEscape(e.relative) + "</a>";
    }
    out += "</td><td>" + HtmlEscape(e.summary) + "</td></tr>\n";
  }
  out += "</table>\n<p id=\"total\">" + HtmlEscape(total) + "</p>\n</body>\n</html>\n";
  return out;
}

std::string ReportDate() {
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  gmtime_r(&now, &utc);
  char text[40];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &utc);
  return text;
}

std::string HtmlReport(const CComparisonState& state, const std::string& date) {
  Json data = {{"result", ResultDocument(state)}, {"count_text", countText(state)}, {"date", date}};
  std::string views;
  Json sourceWindow, destinationWindow;
  appendView(views, "svgS", state.sideSource.get(), state, true, sourceWindow);
  std::string destination;
  appendView(destination, "svgD", state.sideDestination.get(), state, false, destinationWindow);
  data["views"] = {{"source", sourceWindow}, {"destination", destinationWindow}};

  std::string out;
  out.reserve(views.size() + destination.size() + 64 * 1024);
  out += "<!DOCTYPE html>\n<html lang=\"zh\">\n<head>\n<meta charset=\"utf-8\">\n<title>";
  out += HtmlEscape(state.sourceFileName + " ↔ " + state.destinationFileName);
  out += "</title>\n<style>";
  out += kStyle;
  out += "</style>\n<script>window.__errors=[];window.onerror=function(m){window.__errors.push(String(m));"
         "var e=document.getElementById('errors');if(e)e.textContent=window.__errors.join('\\n');};</script>\n";
  out += "</head>\n<body>\n<header>\n<span>源图纸: <span class=\"f\" id=\"source-name\">" + HtmlEscape(state.sourceFileName) +
         "</span></span>\n<span>目标图纸: <span class=\"f\" id=\"destination-name\">" +
         HtmlEscape(state.destinationFileName) + "</span></span>\n<span class=\"count\" id=\"count\">" +
         HtmlEscape(data["count_text"].get<std::string>()) + "</span>\n<span id=\"date\">" + HtmlEscape(date) +
         "</span>\n<button id=\"prev\" title=\"p, ←\">上一个</button><button id=\"next\" title=\"n, →\">下一个</button>\n"
         "<label><input type=\"checkbox\" id=\"only\"> 只显示不同</label>\n<span id=\"pos\"></span> <span id=\"msg\"></span>"
         "\n<pre id=\"errors\" hidden></pre>\n</header>\n<main>\n<nav id=\"tree\">\n";
  appendTree(out, state);
  out += "</nav>\n<section class=\"pane\"><h2>" + HtmlEscape(state.sourceFileName) + "</h2>\n";
  out += views;
  out += "</section>\n<section class=\"pane\"><h2>" + HtmlEscape(state.destinationFileName) + "</h2>\n";
  out += destination;
  out += "</section>\n</main>\n<script type=\"application/json\" id=\"vk-data\">";
  out += ScriptSafeJson(data.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
  out += "</script>\n<script>";
  out += kScript;
  out += "</script>\n</body>\n</html>\n";
  return out;
}

}  // namespace vkcompare
