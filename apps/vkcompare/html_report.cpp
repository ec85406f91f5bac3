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

// A rectangle's colour index as the host shows it: "#rrggbb".
std::string colourRgb(int colourIndex) {
  std::string rgb;
  headless::appendRgb(rgb, headless::aciColor(colourIndex));
  return rgb;
}

Json windowArray(const DrawingWindow& w) { return Json::array({w.minX, w.minY, w.maxX, w.maxY}); }

// One side's view: a canvas, and the drawing's display list for the page's script to draw on it; the window the
// view starts at (the drawing with a margin) and the rectangles of the records placed on this side go to `data`.
void appendView(std::string& out, const char* side, const platform::Database* db, const CComparisonState& state,
                Json& data) {
  const bool sourceSide = side[0] == 's';
  std::string list;
  platform::Extents3d drawn;
  if (db) platform::renderSpaceDisplayList(*db, list, drawn);
  else list = "{\"origin\":[0,0],\"complete\":true,\"colors\":[],\"handles\":[],\"prims\":[],\"geom\":[],\"texts\":[]}";
  DrawingWindow w{0, 0, 100, 100};
  if (!drawn.isEmpty()) {
    const double margin = std::max({drawn.max.x - drawn.min.x, drawn.max.y - drawn.min.y, 1e-6}) * 0.05;
    w = {drawn.min.x - margin, drawn.min.y - margin, drawn.max.x + margin, drawn.max.y + margin};
  }
  data["views"][sourceSide ? "source" : "destination"] = windowArray(w);
  for (std::size_t i = 0; i < state.differences.size(); ++i) {
    const CDiffType& r = *state.differences[i];
    const int colour = RectangleColour(r.kind);
    if (colour == 0 || (r.kind == kDiffDeleted) != sourceSide) continue;
    const DrawingWindow box = DifferenceRectangle(r, sourceSide ? state.sourceOffset : state.destinationOffset);
    data["rectangles"].push_back({i, side, colourRgb(colour), box.minX, box.minY, box.maxX, box.maxY});
  }
  out += "<canvas id=\"view";
  out += sourceSide ? 'S' : 'D';
  out += "\" class=\"view\"></canvas>\n<script type=\"application/json\" id=\"vk-list-";
  out += side;
  out += "\">";
  out += list;
  out += "</script>\n";
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
  const std::vector<std::vector<std::size_t>> members = RangeMembers(state);
  for (std::size_t i = 0; i < members.size(); ++i) {
    out += "<details open><summary>" + HtmlEscape(state.ranges.ranges[i].label) + " <span class=\"n\">(" +
           std::to_string(members[i].size()) + ")</span></summary><ul>\n";
    for (const std::size_t record : members[i]) item(record);
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
canvas.view{flex:1;width:100%;min-height:0;cursor:grab;display:block}
)CSS";

constexpr const char* kScript = R"JS(
(function(){
'use strict';
var D=JSON.parse(document.getElementById('vk-data').textContent);
var R=D.result.records,n=R.length,cur=-1,only=false;
var so=D.result.offsets.source,de=D.result.offsets.destination,dx=de[0]-so[0],dy=de[1]-so[1];
var win={s:D.views.source.slice(),d:D.views.destination.slice()};
var msg=document.getElementById('msg'),pos=document.getElementById('pos');
var dpr=window.devicePixelRatio||1,queued=false,zooming=false,rest=0,FONT='100px '+D.font;
// A view draws its drawing's display list on its canvas. Its primitives are filed in a grid of cells, so that a
// window finds its own quickly; primitives over many cells are kept aside and tried in every window.
function makeView(k,id){
  var c=document.getElementById(id),L=JSON.parse(document.getElementById('vk-list-'+k).textContent);
  // A drawing too big for the walk's budget is drawn in part; its title says so.
  if(L.complete===false)c.parentNode.querySelector('h2').textContent+='（图元过多，只画出了一部分）';
  var P=new Float64Array(L.prims),np=P.length/9,i,j,r,q,entity=0,at=0;
  var x0=Infinity,y0=Infinity,x1=-Infinity,y1=-Infinity;
  // In place, each primitive's entity, where its numbers start and its box's far corner, from the steps and
  // sizes the list holds.
  for(i=0;i<np;i++){j=i*9;entity+=P[j+1];P[j+1]=entity;var count=P[j+4];P[j+4]=at;at+=count;P[j+7]+=P[j+5];P[j+8]+=P[j+6];
    x0=Math.min(x0,P[j+5]);y0=Math.min(y0,P[j+6]);x1=Math.max(x1,P[j+7]);y1=Math.max(y1,P[j+8]);}
  var gs=Math.max(1,Math.min(512,Math.ceil(Math.sqrt(np/4)))),cw=(x1-x0)/gs||1,ch=(y1-y0)/gs||1;
  var v={k:k,c:c,ctx:c.getContext('2d'),P:P,G:new Float64Array(L.geom),T:L.texts,np:np,ox:L.origin[0],oy:L.origin[1],
         colors:L.colors,named:new Uint8Array(L.handles.length),seen:new Uint32Array(np),frame:0,
         gs:gs,x0:x0,y0:y0,cw:cw,ch:ch,big:[],rects:[]};
  v.col=function(x){return Math.max(0,Math.min(gs-1,Math.floor((x-x0)/cw)));};
  v.row=function(y){return Math.max(0,Math.min(gs-1,Math.floor((y-y0)/ch)));};
  var first=new Int32Array(gs*gs+1),c0,c1,r0,r1,pass,fill;
  for(pass=0;pass<2;pass++){
    for(i=0;i<np;i++){
      j=i*9;c0=v.col(P[j+5]);c1=v.col(P[j+7]);r0=v.row(P[j+6]);r1=v.row(P[j+8]);
      if((c1-c0+1)*(r1-r0+1)>16){if(pass)v.big.push(i);continue;}
      for(r=r0;r<=r1;r++)for(q=c0;q<=c1;q++){if(pass)v.cells[fill[r*gs+q]++]=i;else first[r*gs+q+1]++;}
    }
    if(!pass){for(i=0;i<gs*gs;i++)first[i+1]+=first[i];fill=first.slice(0,gs*gs);v.first=first;v.cells=new Int32Array(first[gs*gs]);}
  }
  // The entities the records name, for showing the differences only.
  var index=new Map();L.handles.forEach(function(h,e){index.set(h,e);});
  R.forEach(function(rec){var h=rec[k==='s'?'source_handle':'destination_handle'];if(h&&index.has(h))v.named[index.get(h)]=1;});
  return v;
}
var V={s:makeView('s','viewS'),d:makeView('d','viewD')};
D.rectangles.forEach(function(r){V[r[1]].rects.push(r);});
// Where a view's window lies on its canvas: the window fits the canvas, centred.
function fit(v){
  var w=win[v.k],W=v.c.width,H=v.c.height,s=Math.min(W/(w[2]-w[0]),H/(w[3]-w[1]));
  return {s:s,cx:(w[0]+w[2])/2,cy:(w[1]+w[3])/2,W:W,H:H};
}
// An outline's numbers from i to e, its coordinates relative to its corner (x, y).
function trace(ctx,G,i,e,x,y){
  while(i<e){var o=G[i];
    if(o===0){ctx.moveTo(G[i+1]+x,G[i+2]+y);i+=3;}
    else if(o===1){ctx.lineTo(G[i+1]+x,G[i+2]+y);i+=3;}
    else if(o===2){ctx.arc(G[i+1]+x,G[i+2]+y,G[i+3],G[i+4],G[i+5],G[i+6]===0);i+=7;}
    else{ctx.closePath();i++;}
  }
}
// Draws the primitives of a view about (cx, cy) (relative to the list's origin) at s pixels a drawing unit on a
// canvas W by H pixels.
function render(v,ctx,W,H,s,cx,cy){
  var P=v.P,G=v.G,i,j,e;
  ctx.setTransform(1,0,0,1,0,0);ctx.globalAlpha=1;ctx.fillStyle=D.background;ctx.fillRect(0,0,W,H);
  // Drawing coordinates relative to the list's origin; y runs up.
  var hw=W/2/s,hh=H/2/s,wx0=cx-hw,wx1=cx+hw,wy0=cy-hh,wy1=cy+hh;
  var tx=W/2-cx*s,ty=H/2+cy*s,px=1/s;
  var strokes=[],dots=[],tiny=[],fills=[],wide=[],texts=[],boxes=[];
  function take(p){
    j=p*9;
    if(P[j+7]<wx0||P[j+5]>wx1||P[j+8]<wy0||P[j+6]>wy1||(only&&!v.named[P[j+1]]))return;
    var kind=P[j],colour=P[j+2];
    if(P[j+7]-P[j+5]<px&&P[j+8]-P[j+6]<px&&kind!==3){(tiny[colour]||(tiny[colour]=[])).push(p);return;}
    if(kind===0){if(P[j+3]>0)wide.push(p);else(strokes[colour]||(strokes[colour]=[])).push(p);}
    else if(kind===3)dots.push(p);
    else if(kind===4){e=P[j+4];var h=G[e+6]*s*Math.hypot(G[e+2],G[e+3]);if(h<4)(boxes[colour]||(boxes[colour]=[])).push(p);else texts.push(p);}
    else fills.push(p);
  }
  v.frame++;
  var c0=v.col(wx0),c1=v.col(wx1),r0=v.row(wy0),r1=v.row(wy1);
  if((c1-c0+1)*(r1-r0+1)>=v.gs*v.gs/2){for(i=0;i<v.np;i++)take(i);}
  else{
    for(var r=r0;r<=r1;r++)for(var q=c0;q<=c1;q++){
      var b=r*v.gs+q;for(i=v.first[b];i<v.first[b+1];i++){var p=v.cells[i];if(v.seen[p]!==v.frame){v.seen[p]=v.frame;take(p);}}
    }
    v.big.forEach(take);
  }
  function end(p){return p+1<v.np?P[p*9+13]:G.length;}
  ctx.setTransform(s,0,0,-s,tx,ty);ctx.lineJoin='round';ctx.lineCap='round';
  fills.forEach(function(p){
    j=p*9;ctx.beginPath();trace(ctx,G,P[j+4],end(p),P[j+5],P[j+6]);ctx.fillStyle=v.colors[P[j+2]];ctx.globalAlpha=P[j]===2?0.3:1;ctx.fill('evenodd');
  });
  ctx.globalAlpha=1;ctx.lineWidth=px;
  strokes.forEach(function(list,colour){
    ctx.beginPath();for(var k=0;k<list.length;k++){j=list[k]*9;trace(ctx,G,P[j+4],end(list[k]),P[j+5],P[j+6]);}
    ctx.strokeStyle=v.colors[colour];ctx.stroke();
  });
  wide.forEach(function(p){
    j=p*9;ctx.beginPath();trace(ctx,G,P[j+4],end(p),P[j+5],P[j+6]);ctx.lineWidth=Math.max(P[j+3],px);ctx.strokeStyle=v.colors[P[j+2]];ctx.stroke();
  });
  ctx.globalAlpha=0.5;
  boxes.forEach(function(list,colour){
    ctx.beginPath();for(var k=0;k<list.length;k++){j=list[k]*9;ctx.rect(P[j+5],P[j+6],P[j+7]-P[j+5],P[j+8]-P[j+6]);}
    ctx.fillStyle=v.colors[colour];ctx.fill();
  });
  ctx.globalAlpha=1;ctx.font=FONT;ctx.textBaseline='alphabetic';
  texts.forEach(function(p){
    j=p*9;e=P[j+4];var h=G[e+6],k=100/h,lines=G[e+9];
    ctx.save();ctx.transform(G[e],G[e+1],G[e+2],G[e+3],G[e+4]+P[j+5],G[e+5]+P[j+6]);ctx.scale(1/k,1/k);
    ctx.textAlign=G[e+7]===1?'center':G[e+7]===2?'right':'left';ctx.fillStyle=v.colors[P[j+2]];
    for(var l=0;l<lines;l++){
      var text=v.T[G[e+11+2*l]],y=G[e+10+2*l]*k,fitted=G[e+8];
      if(fitted>0){var m=ctx.measureText(text).width;ctx.save();if(m>0)ctx.scale(fitted*k/m,1);ctx.fillText(text,0,y);ctx.restore();}
      else ctx.fillText(text,0,y);
    }
    ctx.restore();
  });
  // Points, and what is smaller than a pixel, in pixels.
  ctx.setTransform(1,0,0,1,0,0);
  tiny.forEach(function(list,colour){
    ctx.fillStyle=v.colors[colour];ctx.beginPath();
    for(var k=0;k<list.length;k++){j=list[k]*9;ctx.rect(Math.floor(((P[j+5]+P[j+7])/2)*s+tx),Math.floor(ty-((P[j+6]+P[j+8])/2)*s),1,1);}
    ctx.fill();
  });
  dots.forEach(function(p){
    j=p*9;ctx.fillStyle=v.colors[P[j+2]];ctx.beginPath();ctx.arc(P[j+5]*s+tx,ty-P[j+6]*s,1.5*dpr,0,2*Math.PI);ctx.fill();
  });
}
// A view shows a part of a picture twice its size each way, drawn again only when the scale or what is shown
// changes or the window leaves it: a pan within it is a copy. While the wheel turns, the picture is scaled;
// it is drawn again at the new scale once the wheel rests. The records' rectangles go on top.
function draw(v){
  var t0=performance.now(),ctx=v.ctx,f=fit(v),s=f.s,W=f.W,H=f.H,cx=f.cx-v.ox,cy=f.cy-v.oy;
  ctx.setTransform(1,0,0,1,0,0);ctx.globalAlpha=1;ctx.fillStyle=D.background;
  if(!(s>0)||!isFinite(s)){ctx.fillRect(0,0,W,H);return;}
  var b=v.buffer||(v.buffer={c:document.createElement('canvas')}),shown=only+' '+W+' '+H;
  v.c.toggleAttribute('data-scaled',zooming&&b.shown===shown&&b.s!==s);
  if(zooming&&b.shown===shown&&b.s!==s){
    ctx.fillRect(0,0,W,H);
    ctx.drawImage(b.c,(cx-W/2/s-b.cx)*b.s+W,(b.cy-cy-H/2/s)*b.s+H,W*b.s/s,H*b.s/s,0,0,W,H);
  }else{
    var left=b.s===s&&b.shown===shown?Math.round((cx-b.cx)*s+W/2):-1,top=b.s===s?Math.round((b.cy-cy)*s+H/2):-1;
    if(left<0||top<0||left>W||top>H){
      b.c.width=2*W;b.c.height=2*H;b.s=s;b.shown=shown;b.cx=cx;b.cy=cy;left=W/2;top=H/2;
      render(v,b.c.getContext('2d'),2*W,2*H,s,cx,cy);
    }
    ctx.drawImage(b.c,left,top,W,H,0,0,W,H);
  }
  var px=1/s;
  // The records' rectangles: all faintly, the current one bold and on top.
  ctx.setTransform(s,0,0,-s,W/2-cx*s,H/2+cy*s);
  var current=null;
  v.rects.forEach(function(r){
    if(r[0]===cur){current=r;return;}
    ctx.globalAlpha=0.35;ctx.lineWidth=px;ctx.strokeStyle=r[2];ctx.strokeRect(r[3]-v.ox,r[4]-v.oy,r[5]-r[3],r[6]-r[4]);
  });
  if(current){ctx.globalAlpha=1;ctx.lineWidth=3*px;ctx.strokeStyle=current[2];
    ctx.strokeRect(current[3]-v.ox,current[4]-v.oy,current[5]-current[3],current[6]-current[4]);}
  ctx.globalAlpha=1;
  v.c.setAttribute('data-draw-ms',(performance.now()-t0).toFixed(1));
}
function redraw(){queued=false;draw(V.s);draw(V.d);}
function schedule(){if(!queued){queued=true;requestAnimationFrame(redraw);}}
// The window each view shows is kept on it as data-window (min x, min y, max x, max y).
function show(k){V[k].c.setAttribute('data-window',win[k].join(' '));schedule();}
function other(k){var s=k==='s'?1:-1,w=win[k],o=k==='s'?'d':'s';win[o]=[w[0]+s*dx,w[1]+s*dy,w[2]+s*dx,w[3]+s*dy];show(o);}
function size(){['s','d'].forEach(function(k){var c=V[k].c;c.width=Math.max(1,Math.round(c.clientWidth*dpr));c.height=Math.max(1,Math.round(c.clientHeight*dpr));});}
function arr(p){return [p.min[0],p.min[1],p.max[0],p.max[1]];}
function locate(i){
  var r=R[i];cur=i;
  win.s=arr(r.locate.source);win.d=arr(r.locate.destination);show('s');show('d');
  var old=document.querySelectorAll('#tree .cur');for(var j=0;j<old.length;j++)old[j].classList.remove('cur');
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
document.getElementById('only').onchange=function(e){only=e.target.checked;document.body.classList.toggle('only',only);schedule();};
document.addEventListener('keydown',function(e){
  if(e.ctrlKey||e.altKey||e.metaKey)return;
  if(e.key==='n'||e.key==='ArrowRight'||e.key==='ArrowDown'){step(1);e.preventDefault();}
  else if(e.key==='p'||e.key==='ArrowLeft'||e.key==='ArrowUp'){step(-1);e.preventDefault();}
});
document.getElementById('tree').addEventListener('click',function(e){
  var li=e.target.closest('li[data-i]');if(li){msg.textContent='';locate(+li.getAttribute('data-i'));}
});
// The wheel zooms about the pointer and dragging pans; the other view follows.
var drag=null;
['s','d'].forEach(function(k){
  var v=V[k],el=v.c;
  function at(e){var b=el.getBoundingClientRect(),f=fit(v);
    return [f.cx+((e.clientX-b.left)*dpr-f.W/2)/f.s,f.cy-((e.clientY-b.top)*dpr-f.H/2)/f.s];}
  el.addEventListener('wheel',function(e){
    e.preventDefault();var p=at(e),x=p[0],y=p[1],f=e.deltaY>0?1.25:0.8,w=win[k];
    win[k]=[x+(w[0]-x)*f,y+(w[1]-y)*f,x+(w[2]-x)*f,y+(w[3]-y)*f];
    zooming=true;clearTimeout(rest);rest=setTimeout(function(){zooming=false;schedule();},200);show(k);other(k);
  },{passive:false});
  el.addEventListener('mousedown',function(e){drag={k:k,x:e.clientX,y:e.clientY,w:win[k].slice(),s:fit(v).s};e.preventDefault();});
});
window.addEventListener('mousemove',function(e){
  if(!drag)return;var mx=(e.clientX-drag.x)*dpr/drag.s,my=(e.clientY-drag.y)*dpr/drag.s,w=drag.w;
  win[drag.k]=[w[0]-mx,w[1]+my,w[2]-mx,w[3]+my];show(drag.k);other(drag.k);
});
window.addEventListener('mouseup',function(){drag=null;});
window.addEventListener('resize',function(){size();schedule();});
size();show('s');show('d');
// #next=K steps K times at load, #record=I locates record I, #keys=npn presses those keys: links to a
// record, and a way to try the page.
var h=/^#(next|record|keys)=(\d+|[np]+)$/.exec(location.hash);
if(h&&h[1]==='next'){for(var s=0;s<+h[2];s++)step(1);}
else if(h&&h[1]==='record'&&+h[2]<n)locate(+h[2]);
else if(h&&h[1]==='keys')h[2].split('').forEach(function(k){document.dispatchEvent(new KeyboardEvent('keydown',{key:k}));});
redraw();
document.body.setAttribute('data-ready','1');
// How long the page took to be ready, its first drawing included, from the start of its loading.
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
  Json data = {{"result", ResultDocument(state)},
               {"count_text", countText(state)},
               {"date", date},
               {"font", platform::kDrawingFontFamily},
               {"background", platform::kDrawingBackground},
               {"views", Json::object()},
               {"rectangles", Json::array()}};
  std::string views;
  appendView(views, "s", state.sideSource.get(), state, data);
  std::string destination;
  appendView(destination, "d", state.sideDestination.get(), state, data);

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
