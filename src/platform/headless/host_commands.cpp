// The headless host's own commands: OPEN, CLOSE, QUIT, ZOOM, PAN, REGEN, SETVAR, DOCUMENT, SVGOUT, the
// toolbar and menu-group commands, PALETTE and HELP.
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "platform/files.h"
#include "platform/headless/host_session.h"
#include "platform/headless/menu_bar.h"
#include "platform/headless/palettes.h"
#include "platform/host.h"
#include "platform/render.h"
#include "platform/text.h"

namespace headless {

namespace {

constexpr const char* kHostGroup = "ACAD_MAIN";

void print(const std::string& text) { platform::printToCommandLine(text); }

std::string number(double v) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.4f", v);
  return buffer;
}

// The file name prompt takes the whole line; quotes around a name with blanks are dropped.
std::string unquote(std::string text) {
  if (text.size() >= 2 && text.front() == '"' && text.back() == '"') text = text.substr(1, text.size() - 2);
  return text;
}

HeadlessDocument* needDocument(HostSession& session) {
  HeadlessDocument* document = session.current();
  if (!document) print("没有打开的图形。\n");
  return document;
}

void open(HostSession& session) {
  const Token token = session.readToken("输入要打开的图形文件名: ", true);
  if (token.kind != Token::Kind::Text || token.text.empty()) return;
  std::string error;
  if (!session.openDocument(unquote(token.text), error)) print("无法打开图形：" + error + "\n");
}

void close(HostSession& session) {
  if (HeadlessDocument* document = needDocument(session)) session.closeDocument(document);
}

void quit(HostSession& session) {
  while (!session.documentList().empty()) session.closeDocument(session.documentList().back().get());
}

void zoom(HostSession& session) {
  HeadlessDocument* document = needDocument(session);
  if (!document) return;
  const Token token = session.readToken(
      "指定窗口的角点，输入比例因子 (nX 或 nXP)，或者\n[全部(A)/上一个(P)/窗口(W)/范围(E)] <实时>: ");
  if (token.kind != Token::Kind::Text || token.text.empty()) return;
  const std::string option = platform::toUpperAscii(token.text);
  platform::Point3d first, second;
  if (option == "E" || option == "A") {
    if (!session.zoomExtents(*document)) print("图形范围为空。\n");
    return;
  }
  if (option == "P") {
    View& view = document->view;
    if (view.previous.empty()) {
      print("没有保存上一个视图。\n");
      return;
    }
    view.center = view.previous.back().center;
    view.height = view.previous.back().height;
    view.previous.pop_back();
    session.regen(*document);
    return;
  }
  if (option == "W") {
    if (platform::getPoint(nullptr, "指定第一个角点: ", first) != platform::RTNORM) return;
  } else {
    // A corner typed at once, or a scale: "2", "2X" (relative to the view), "2XP" taken as "2X".
    char* end = nullptr;
    const double factor = std::strtod(option.c_str(), &end);
    const std::string_view rest(end);
    if (end != option.c_str() && (rest.empty() || rest == "X" || rest == "XP")) {
      if (factor > 0.0) session.zoomScale(*document, factor);
      else print("需要正数。\n");
      return;
    }
    std::string corner = token.text;
    char* x = nullptr;
    first.x = std::strtod(corner.c_str(), &x);
    if (x == corner.c_str() || *x != ',' ) {
      print("无效的选项关键字。\n");
      return;
    }
    first.y = std::strtod(x + 1, &x);
  }
  if (platform::getCorner(first, "指定对角点: ", second) != platform::RTNORM) return;
  session.zoomWindow(*document, first, second);
}

void panCommand(HostSession& session) {
  HeadlessDocument* document = needDocument(session);
  if (!document) return;
  platform::Point3d base, second;
  if (platform::getPoint(nullptr, "指定基点或位移: ", base) != platform::RTNORM) return;
  const int r = platform::getPoint(&base, "指定第二点: ", second);
  if (r == platform::RTNONE) session.pan(*document, -base.x, -base.y);  // the first point is the displacement
  else if (r == platform::RTNORM) session.pan(*document, base.x - second.x, base.y - second.y);
}

void regenCommand(HostSession& session) {
  if (HeadlessDocument* document = needDocument(session)) {
    session.regen(*document);
    print("正在重生成模型。\n");
  }
}

void document(HostSession& session) {
  const auto& list = session.documentList();
  if (list.empty()) {
    print("没有打开的图形。\n");
    return;
  }
  const Token token = session.readToken("输入文档的编号或标题 <列出>: ", true);
  if (token.kind != Token::Kind::Text) return;
  if (token.text.empty()) {
    for (std::size_t i = 0; i < list.size(); ++i)
      print("  " + std::to_string(i + 1) + "  " + list[i]->docTitle() + "  " + list[i]->fileName() +
            (list[i].get() == session.active() ? "  (当前)" : "") + "\n");
    return;
  }
  char* end = nullptr;
  const long index = std::strtol(token.text.c_str(), &end, 10);
  HeadlessDocument* chosen = nullptr;
  if (*end == '\0' && index >= 1 && static_cast<std::size_t>(index) <= list.size())
    chosen = list[static_cast<std::size_t>(index) - 1].get();
  for (const auto& d : list)
    if (!chosen && platform::equalsIgnoreCase(d->docTitle(), token.text)) chosen = d.get();
  if (!chosen) {
    print("没有这个文档：" + token.text + "\n");
    return;
  }
  session.activate(chosen);
  print("当前文档：" + chosen->docTitle() + "\n");
}

// ---- toolbars and menu groups

void listToolbars() {
  const std::vector<const platform::ToolbarInfo*> all = MenuBar::instance().all();
  if (all.empty()) {
    print("没有工具栏。\n");
    return;
  }
  for (const platform::ToolbarInfo* t : all) {
    print("工具栏“" + t->name + "”（菜单组 " + t->group + "，" + (t->visible ? "显示" : "隐藏") + "），" +
          std::to_string(t->buttons.size()) + " 个按钮\n");
    for (std::size_t i = 0; i < t->buttons.size(); ++i) {
      const platform::ToolbarButton& b = t->buttons[i];
      print("  " + std::to_string(i + 1) + ". " + b.name + "  提示: " + b.helpString + "  宏: \"" +
            MenuBar::shownMacro(b.macro) + "\"\n");
      print(b.smallBitmap.empty() && b.largeBitmap.empty()
                ? std::string("     图标: 默认\n")
                : "     小图标: " + b.smallBitmap + "  大图标: " + b.largeBitmap + "\n");
    }
  }
}

// TOOLBAR: lists the toolbars, or presses the button with the caption given; its macro is read next, as if
// typed, before the rest of the input.
void toolbar(HostSession& session) {
  const Token token = session.readToken("输入要按下的按钮标题或 [列出(L)] <列出>: ", true);
  if (token.kind != Token::Kind::Text) return;
  const std::string caption = unquote(token.text);
  if (caption.empty() || platform::equalsIgnoreCase(caption, "L")) {
    listToolbars();
    return;
  }
  const platform::ToolbarInfo* hidden = nullptr;
  for (const platform::ToolbarInfo* t : MenuBar::instance().all())
    for (const platform::ToolbarButton& b : t->buttons) {
      if (b.name != caption) continue;
      if (!t->visible) {
        hidden = hidden ? hidden : t;
        continue;
      }
      session.typeAhead(MenuBar::typedMacro(b.macro));
      return;
    }
  if (hidden) print("工具栏“" + hidden->name + "”已隐藏，不能按它的按钮。\n");
  else print("没有标题为“" + caption + "”的按钮。\n");
}

// -TOOLBAR: shows or hides a toolbar by name, or all of them.
void toolbarVisibility(HostSession& session) {
  const Token name = session.readToken("输入工具栏名称或 [全部(ALL)]: ", true);
  if (name.kind != Token::Kind::Text || name.text.empty()) return;
  const std::string wanted = unquote(name.text);
  const bool all = platform::equalsIgnoreCase(wanted, "ALL");
  std::vector<platform::ToolbarId> chosen;
  for (const platform::ToolbarInfo* t : MenuBar::instance().all())
    if (all || platform::equalsIgnoreCase(t->name, wanted)) chosen.push_back(t->id);
  if (chosen.empty()) {
    print("没有这个工具栏：" + wanted + "\n");
    return;
  }
  const Token option = session.readToken("输入选项 [显示(S)/隐藏(H)] <显示>: ");
  if (option.kind != Token::Kind::Text) return;
  const std::string o = platform::toUpperAscii(option.text);
  if (!o.empty() && o != "S" && o != "H") {
    print("无效的选项关键字。\n");
    return;
  }
  for (platform::ToolbarId id : chosen) platform::setToolbarVisible(id, o != "H");
}

void menuLoad(HostSession& session) {
  const Token name = session.readToken("输入要加载的菜单组名称: ", true);
  if (name.kind != Token::Kind::Text || name.text.empty()) return;
  if (!platform::loadMenuGroup(unquote(name.text))) print("菜单组“" + unquote(name.text) + "”已加载。\n");
}

void menuUnload(HostSession& session) {
  const Token name = session.readToken("输入要卸载的菜单组名称: ", true);
  if (name.kind != Token::Kind::Text || name.text.empty()) return;
  if (!platform::unloadMenuGroup(unquote(name.text))) print("没有这个菜单组：" + unquote(name.text) + "\n");
}

// Writes what the current document's view shows, temporary vectors included, to an SVG file (whole or not at all).
void svgOut(HostSession& session) {
  HeadlessDocument* document = needDocument(session);
  if (!document) return;
  const Token token = session.readToken("输入 SVG 文件名: ", true);
  if (token.kind != Token::Kind::Text || token.text.empty()) return;
  const std::string path = unquote(token.text);
  std::string svg;
  std::string error;
  if (!platform::renderViewSvg(document->view.window, svg)) print("无法绘制当前视图。\n");
  else if (!platform::writeWholeFile(path, svg, &error)) print("无法写入 SVG 文件：" + error + "\n");
  else print("视图已写入 " + path + "\n");
}

// The palette set shown last: Enter draws its tree with the items numbered; a number or a label
// double-clicks that item.
void palette(HostSession& session) {
  const PaletteSet* shown = Palettes::instance().shown();
  if (!shown) {
    print("没有显示的选项板。\n");
    return;
  }
  const platform::PaletteSetId set = shown->id;
  const Token token = session.readToken("输入条目的编号或标签 <列出>: ", true);
  if (token.kind != Token::Kind::Text) return;
  // The set may have gone while the prompt waited (a module unloaded by a queued command).
  shown = Palettes::instance().find(set);
  if (!shown) return;
  if (token.text.empty()) {
    print(Palettes::render(*shown));
    return;
  }
  const std::optional<platform::PaletteItemId> item = Palettes::itemNamed(*shown, unquote(token.text));
  if (!item) {
    print("选项板上没有这个条目：" + token.text + "\n");
    return;
  }
  Palettes::instance().activate(set, *item);
}

void help(HostSession& session) {
  print("可用的命令:\n");
  for (const Command& c : session.commands())
    print("  " + c.localName + (c.owner ? "  (" + c.group + ")" : "") + "\n");
  print("PALETTE: 回车列出显示的选项板（编号的树），输入编号或标签则双击该条目。\n");
  print("LISP: (函数名 \"参数\" ...) 调用模块定义的函数。\n");
}

}  // namespace

void hostCommandSetvar(HostSession& session) {
  const Token name = session.readToken("输入变量名: ");
  if (name.kind != Token::Kind::Text || name.text.empty()) return;
  const std::string key = platform::toUpperAscii(name.text);
  HeadlessDocument* document = session.current();
  // Variables the drawing or its view answers are read-only here.
  std::string readOnly;
  if (key == "DBMOD") readOnly = document ? std::to_string(document->dbmod()) : "0";
  else if (key == "DWGNAME") readOnly = document ? "\"" + document->docTitle() + "\"" : "\"\"";
  else if (key == "TILEMODE" && document) readOnly = std::to_string(document->database().tilemode());
  else if (key == "VIEWCTR" && document)
    readOnly = number(document->view.center.x) + "," + number(document->view.center.y);
  else if (key == "VIEWSIZE" && document) readOnly = number(document->view.height);
  if (!readOnly.empty()) {
    print(key + " = " + readOnly + " (只读)\n");
    return;
  }
  auto it = session.variables_.find(key);
  if (it == session.variables_.end()) {
    print("未知变量名。\n");
    return;
  }
  const Token value = session.readToken("输入 " + key + " 的新值 <" + it->second + ">: ");
  if (value.kind != Token::Kind::Text || value.text.empty()) return;
  char* end = nullptr;
  std::strtol(value.text.c_str(), &end, 10);
  if (*end != '\0') {
    print("需要整数。\n");
    return;
  }
  it->second = value.text;
}

void HostSession::addHostCommands() {
  using platform::kCmdModal;
  using platform::kCmdSession;
  const auto add = [&](const char* name, int flags, void (*function)(HostSession&)) {
    commands_.push_back({kHostGroup, name, name, flags, [this, function] { function(*this); }, nullptr});
  };
  add("OPEN", kCmdSession, open);
  add("CLOSE", kCmdSession, close);
  add("QUIT", kCmdSession, [](HostSession& s) {
    quit(s);
    s.quit_ = true;
  });
  add("ZOOM", kCmdModal, zoom);
  add("PAN", kCmdModal, panCommand);
  add("REGEN", kCmdModal, regenCommand);
  add("SETVAR", kCmdModal, hostCommandSetvar);
  add("DOCUMENT", kCmdSession, document);
  add("TOOLBAR", kCmdModal, toolbar);
  add("-TOOLBAR", kCmdModal, toolbarVisibility);
  add("MENULOAD", kCmdModal, menuLoad);
  add("MENUUNLOAD", kCmdModal, menuUnload);
  add("SVGOUT", kCmdModal, svgOut);
  add("PALETTE", kCmdModal, palette);
  add("HELP", kCmdModal, help);
  variables_ = {{"CMDECHO", "1"}, {"FILEDIA", "1"}, {"OSMODE", "0"}, {"PICKBOX", "3"}};
}

}  // namespace headless
