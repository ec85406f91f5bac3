// Reading of the header variables section of an R13+ drawing, as far as the model space extents.
#include "platform/headless/dwg_header.h"

namespace headless {

namespace {

// Reads the fields in file order, leaving out what a release does not store. From R2007 on the texts are
// in a string stream and the handles (but the handle seed) in a handle stream, both after the data, so
// they are not met on the way.
class HeaderFields {
 public:
  explicit HeaderFields(DwgBitReader& bits) : bits_(bits), v_(bits.version()) {}
  bool before(DwgVersion v) const { return v_ < v; }
  bool from(DwgVersion v) const { return v_ >= v; }
  void bits(int n) {
    for (int i = 0; i < n; ++i) bits_.readBit();
  }
  void shorts(int n) {
    for (int i = 0; i < n; ++i) bits_.readBitShort();
  }
  void longs(int n) {
    for (int i = 0; i < n; ++i) bits_.readBitLong();
  }
  void doubles(int n) {
    for (int i = 0; i < n; ++i) bits_.readBitDouble();
  }
  void points(int n) {
    for (int i = 0; i < n; ++i) bits_.read3BitDoubles();
  }
  void texts(int n) {
    if (from(DwgVersion::R2007)) return;
    for (int i = 0; i < n; ++i) bits_.readText(scratch_);
  }
  void handles(int n) {
    if (from(DwgVersion::R2007)) return;
    for (int i = 0; i < n; ++i) bits_.readHandle();
  }
  // The UCS of a space after its elevation: origin and axes, name, and from R2000 the orthographic UCSs.
  void ucs() {
    points(3);
    handles(1);
    if (before(DwgVersion::R2000)) return;
    handles(1);
    shorts(1);
    handles(1);
    points(6);
  }
  void color() {
    const DwgColor c = bits_.readColor();
    texts((c.hasName() ? 1 : 0) + (c.hasBookName() ? 1 : 0));
  }

 private:
  DwgBitReader& bits_;
  DwgVersion v_;
  std::string scratch_;
};

}  // namespace

bool readDwgHeaderVariables(const DwgSections& sections, DwgHeaderVariables& out, std::string& error) {
  if (sections.headerVariables.empty()) {
    error = sections.fileName + ": the header variables cannot be read (their section is missing or damaged)";
    return false;
  }
  using V = DwgVersion;
  DwgBitReader r(sections.headerVariables, sections.version);
  HeaderFields f(r);
  if (f.from(V::R2007)) r.readRawLong();  // the size of the data in bits
  if (f.from(V::R2013)) r.readBitLongLong();  // REQUIREDVERSIONS
  f.doubles(4);
  f.texts(4);
  f.longs(2);
  if (f.before(V::R2000)) f.shorts(1);
  if (f.before(V::R2004)) f.handles(1);  // the current viewport
  f.bits(2);                             // DIMASO, DIMSHO
  if (f.before(V::R2000)) f.bits(1);     // DIMSAV
  f.bits(7);                             // PLINEGEN to LIMCHECK
  if (f.before(V::R2000) || f.from(V::R2004)) f.bits(1);  // BLIPMODE before R2000, unnamed from R2004
  f.bits(4);                             // USRTIMER, SKPOLY, ANGDIR, SPLFRAME
  if (f.before(V::R2000)) f.bits(2);     // ATTREQ, ATTDIA
  f.bits(2);                             // MIRRTEXT, WORLDVIEW
  if (f.before(V::R2000)) f.bits(1);     // WIREFRAME
  out.tilemode = r.readBit();
  f.bits(2);                             // PLIMCHECK, VISRETAIN
  if (f.before(V::R2000)) f.bits(1);     // DELOBJ
  f.bits(2);                             // DISPSILH, PELLIPSE
  f.shorts(1);                           // PROXYGRAPHICS
  if (f.before(V::R2000)) f.shorts(1);   // DRAGMODE
  f.shorts(5);                           // TREEDEPTH, LUNITS, LUPREC, AUNITS, AUPREC
  if (f.before(V::R2000)) f.shorts(1);   // OSMODE
  f.shorts(1);                           // ATTMODE
  if (f.before(V::R2000)) f.shorts(1);   // COORDS
  f.shorts(1);                           // PDMODE
  if (f.before(V::R2000)) f.shorts(1);   // PICKSTYLE
  if (f.from(V::R2004)) f.longs(3);
  f.shorts(19);                          // USERI1-5 to TEXTQLTY
  out.ltscale = r.readBitDouble();
  f.doubles(20);                         // TEXTSIZE to CELTSCALE
  if (f.before(V::R2007)) f.texts(1);    // MENUNAME
  f.longs(4);                            // TDCREATE, TDUPDATE
  if (f.from(V::R2004)) f.longs(3);
  f.longs(4);                            // TDINDWG, TDUSRTIMER
  f.color();                             // CECOLOR
  r.readHandle();                        // HANDSEED, in the data in every release
  f.handles(3);                          // CLAYER, TEXTSTYLE, CELTYPE
  if (f.from(V::R2007)) f.handles(1);    // CMATERIAL
  f.handles(2);                          // DIMSTYLE, CMLSTYLE
  if (f.from(V::R2000)) f.doubles(1);    // PSVPSCALE
  out.paperInsbase = r.read3BitDoubles();
  out.paperExtmin = r.read3BitDoubles();
  out.paperExtmax = r.read3BitDoubles();
  r.readRaw2Doubles();
  r.readRaw2Doubles();
  f.doubles(1);
  f.ucs();
  out.insbase = r.read3BitDoubles();
  out.extmin = r.read3BitDoubles();
  out.extmax = r.read3BitDoubles();
  if (r.failed()) {
    error = sections.fileName + ": the header variables end before the drawing extents";
    return false;
  }
  return true;
}

}  // namespace headless
