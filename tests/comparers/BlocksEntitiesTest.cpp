// Hatches, meshes, faces, solids and traces, shapes, lights, sections, images and wipeouts, OLE frames,
// underlays, viewports and proxies: their messages in order, keys and the factory's choices.
#include <gtest/gtest.h>

#include <deque>

#include "comparers/CVkAcDbLight.h"
#include "comparers/CVkAcDbOle2Frame.h"
#include "comparers/CVkAcDbOleFrame.h"
#include "comparers/CVkAcDbProxyEntity.h"
#include "comparers/CVkAcDbSolidOrTrace.h"
#include "comparers/CVkCustomEntity.h"
#include "comparers/ComparerTestSupport.h"
#include "platform/text.h"

using vktest::compareText;
using vktest::loadComparers;

namespace {

struct EntitiesFixture : ::testing::Test {
  vktest::TempDir dir;
  CompareOptions all;
  int files = 0;
  std::string nextName() { return "e" + std::to_string(files++) + ".dxf"; }
  vktest::LoadedDrawing drawing(const std::string& entities, const std::string& objects = "") {
    std::string dxf = vktest::dxfDrawing(entities);
    if (!objects.empty()) {
      // The OBJECTS section goes before the end of the file.
      const std::size_t eof = dxf.rfind("0\nEOF");
      dxf.insert(eof, vktest::dxfFromPairs("0|SECTION|2|OBJECTS|" + objects + "|0|ENDSEC"));
    }
    return loadComparers(dir, nextName(), dxf, all);
  }
  // The destination's record text against the source, both one entity drawn from groups.
  std::string compare(const std::string& source, const std::string& destination) {
    auto a = drawing(source);
    auto b = drawing(destination);
    return compareText(*b.comparers.at(0), *a.comparers.at(0));
  }
  static const CVkDetailedEntity& detailed(const vktest::LoadedDrawing& d, std::size_t i = 0) {
    return dynamic_cast<const CVkDetailedEntity&>(*d.comparers.at(i));
  }
  // A comparer the factory does not make, made and loaded the way the factory would.
  template <typename T>
  std::unique_ptr<T> direct(const vktest::LoadedDrawing& d, std::size_t i = 0) {
    auto c = std::make_unique<T>();
    c->setContexts(d.context.get(), nullptr);
    c->load(d.db->openEntity(d.db->blockRecord(d.db->modelSpaceId()).entityIds().at(i)), platform::Matrix3d());
    return c;
  }
  // The same for a drawing of its own, kept as long as the fixture: a comparer lives no longer than its
  // drawing's texts.
  template <typename T>
  std::unique_ptr<T> direct(vktest::LoadedDrawing&& d) {
    return direct<T>(kept.emplace_back(std::move(d)));
  }
  std::deque<vktest::LoadedDrawing> kept;
};

}  // namespace

TEST_F(EntitiesFixture, HatchMessagesInOrder) {
  // Group 41 is the spacing of a user-defined pattern and the scale of the others.
  const std::string a = "0|HATCH|8|0|100|AcDbHatch|10|0|20|0|30|0|2|ANSI31|70|0|71|0|91|1|92|2|72|0|73|1|93|0|75|0|76|0|52|0|41|3";
  const std::string b = "0|HATCH|8|0|100|AcDbHatch|10|0|20|0|30|0|2|USER|70|0|71|0|91|2|92|2|72|0|73|1|93|0|92|2|72|0|73|1|"
                        "93|0|75|0|76|1|52|45|41|2|450|1";
  EXPECT_EQ(compare(a, b), "填充图元 填充类型不一样,模式角度不一样,模式比例不一样,模式空间不一样,模式类型不一样,"
                           "边界循环的总数不一样,模式名称不一样,");
  auto d = drawing(a);
  EXPECT_EQ(detailed(d).detailTexts(), (std::vector<std::string>{"0", "0.00", "1.00", "3.00", "0", "1", "ANSI31"}));
  const platform::Extents3d& x = d.comparers[0]->placedExtents();
  EXPECT_EQ(d.comparers[0]->keyText(), "0," + keyDigest(platform::fmt("HATCH,%.2f,%.2f,%.2f,%.2f", x.min.x, x.min.y, x.max.x, x.max.y)));
}

TEST_F(EntitiesFixture, MeshCountsAndVertices) {
  // A tetrahedron (MESH falls to the fallback display name): closed, so watertight; one level of smoothing
  // adds a point per edge and per face.
  const std::string tetra = "0|MESH|8|0|100|AcDbSubDMesh|71|2|72|0|91|1|92|4|10|0|20|0|30|0|10|1|20|0|30|0|10|0|20|1|30|0|"
                            "10|0|20|0|30|1|93|16|90|3|90|0|90|2|90|1|90|3|90|0|90|1|90|3|90|3|90|1|90|2|90|3|90|3|90|2|"
                            "90|0|90|3|94|6|95|0|90|0";
  auto d = drawing(tetra);
  EXPECT_EQ(detailed(d).detailTexts(), (std::vector<std::string>{"1", "4", "4", "14", "6"}));
  ASSERT_EQ(detailed(d).detailLists().size(), 1u);
  EXPECT_EQ(detailed(d).detailLists()[0][1], "1.00,0.00");
  std::string moved = tetra;
  moved.replace(moved.find("10|1|20|0"), 9, "10|2|20|0");
  EXPECT_EQ(compare(tetra, moved), "代理实体图元第1个顶点位置不一样,");
  // Without its last face the mesh is open.
  std::string open = tetra;
  open.replace(open.find("93|16"), 5, "93|12");
  open.replace(open.find("|90|3|90|2|90|0|90|3|94"), 23, "|94");
  EXPECT_EQ(compare(tetra, open), "代理实体图元网格是水密的不一样,网格面的数目不一样,当前级别（平滑）网格顶点的数目不一样,");
}

TEST_F(EntitiesFixture, FaceKeyAndEdgeVisibility) {
  const std::string face = "0|3DFACE|8|0|10|0|20|0|30|0|11|1|21|0|31|0|12|1|22|1|32|2|13|0|23|1|33|2";
  auto d = drawing(face);
  EXPECT_EQ(d.comparers[0]->keyText(), "0," + keyDigest("3DFACE,0.00,0.00,1.00,0.00,1.00,1.00,0.00,1.00"));
  EXPECT_EQ(d.comparers[0]->zText(), "0.00,0.00,2.00,2.00");
  EXPECT_EQ(detailed(d).detailTexts()[0], "1,1,1,1");
  auto hidden = drawing(face + "|70|5");
  EXPECT_EQ(detailed(hidden).detailTexts()[0], "0,1,0,1");
  EXPECT_EQ(compareText(*hidden.comparers[0], *d.comparers[0]), "3D面图元 边缘的可见性不一样,");
}

TEST_F(EntitiesFixture, SolidsAndTracesByName) {
  auto d = drawing("0|SOLID|8|0|10|1|20|2|30|0|11|3|21|2|12|1|22|4|13|3|23|4|0|TRACE|8|0|10|1|20|2|11|3|21|2|12|1|22|4|13|3|23|4");
  ASSERT_NE(dynamic_cast<const CVkAcDbSolidOrTrace*>(d.comparers[0].get()), nullptr);
  ASSERT_NE(dynamic_cast<const CVkAcDbSolidOrTrace*>(d.comparers[1].get()), nullptr);
  EXPECT_EQ(d.comparers[0]->keyText(), "0," + keyDigest("SOLID,1.00,2.00"));
  EXPECT_EQ(d.comparers[1]->description(), "跟踪图元 ");
  EXPECT_EQ(compare("0|SOLID|8|0|10|1|20|2|11|3|21|2|12|1|22|4", "0|SOLID|8|0|39|2|10|1|20|2|11|3|21|2|12|1|22|4|210|0|220|0|230|-1"),
            "三维实体图元 厚度不一样,仅有一个平面包含实体不一样,");
}

TEST_F(EntitiesFixture, ShapeMessagesInOrder) {
  EXPECT_EQ(compare("0|SHAPE|8|0|10|1|20|1|40|1|2|BOX",
                    "0|SHAPE|8|0|39|1|10|1|20|1|40|2|2|BOX2|50|10|41|0.5|51|15|210|0|220|0|230|-1"),
            "型图元 名称不一样,形状高度不一样,旋转角不一样,宽度因子不一样,形状的倾斜角不一样,厚度不一样,法向量不一样,");
}

TEST_F(EntitiesFixture, LightsAreComparedAsCustomEntities) {
  const std::string light = "0|LIGHT|8|0|100|AcDbLight|90|1|1|Spot1|70|3|290|1|40|1|10|5|20|6|30|7|11|1|21|2|31|3";
  auto a = drawing(light);
  ASSERT_NE(dynamic_cast<const CVkCustomEntity*>(a.comparers[0].get()), nullptr);
  EXPECT_EQ(a.comparers[0]->description(), "光照图元 ");
  std::string aimed = light;
  aimed.replace(aimed.find("11|1|21|2"), 9, "11|4|21|2");
  const std::string text = compare(light, aimed);
  EXPECT_TRUE(text.starts_with("光照图元 ,0,LIGHT,1,Spot1,")) << text;
  EXPECT_TRUE(text.ends_with("不同")) << text;
  // A moved light has another key: an added and a deleted light.
  std::string moved = light;
  moved.replace(moved.find("10|5|20|6"), 9, "10|9|20|6");
  EXPECT_NE(drawing(moved).comparers[0]->keyText(), a.comparers[0]->keyText());
  // The light comparer itself: its target text keeps the literal "%.2f," of its format.
  auto mine = direct<CVkAcDbLight>(a);
  EXPECT_EQ(mine->keyText(), "0," + keyDigest("LIGHT,5.00,6.00"));
  EXPECT_EQ(mine->detailTexts(), (std::vector<std::string>{"Spot1", "%.2f,1.00", "3"}));
  auto other = direct<CVkAcDbLight>(drawing("0|LIGHT|8|0|100|AcDbLight|90|1|1|Spot2|70|2|10|5|20|6|30|7|11|4|21|2|31|3"));
  EXPECT_EQ(compareText(*other, *mine), "光照图元 光对象的名称不一样,光目标位置的位置不一样,光对象的类型不一样,");
}

TEST_F(EntitiesFixture, SectionStateAndVertices) {
  const std::string a = "0|SECTIONOBJECT|8|0|100|AcDbSection|90|1|91|0|1|S|92|2|11|0|21|0|31|0|11|5|21|5|31|0";
  const std::string b = "0|SECTIONOBJECT|8|0|100|AcDbSection|90|2|91|1|1|S|92|2|11|0|21|0|31|0|11|5|21|6|31|0";
  EXPECT_EQ(compare(a, b), "代理实体图元对象的状态不一样,启用活切面的操作不一样,第1个顶点位置不一样,");
}

TEST_F(EntitiesFixture, ImagesAndWipeouts) {
  const std::string image = "0|IMAGE|5|30|8|0|100|AcDbRasterImage|90|0|10|1|20|2|30|0|11|0.1|21|0|31|0|12|0|22|0.1|32|0|"
                            "13|100|23|50|340|40|70|7|280|0|71|1|91|2|14|-0.5|24|-0.5|14|99.5|24|49.5";
  const std::string def = "0|IMAGEDEF|5|40|100|AcDbRasterImageDef|90|0|1|C:/img/a.png|10|100|20|50";
  auto a = drawing(image, def);
  EXPECT_EQ(a.comparers[0]->keyText(), "0," + keyDigest("IMAGE,1.00,2.00"));
  EXPECT_EQ(detailed(a).detailTexts(), (std::vector<std::string>{"10.00, 0.00", "0.00, 5.00", "C:/img/a.png"}));
  std::string clipped = image;
  clipped.replace(clipped.find("14|99.5"), 7, "14|90.5");
  auto b = drawing(clipped, "0|IMAGEDEF|5|40|100|AcDbRasterImageDef|90|0|1|C:/img/b.png|10|100|20|50");
  EXPECT_EQ(compareText(*b.comparers[0], *a.comparers[0]), "图片(影像)图元 文件名不一样,第1个顶点位置不一样,");
  auto w = drawing("0|WIPEOUT|8|0|100|AcDbWipeout|90|0|10|0|20|0|30|0|11|2|21|0|31|0|12|0|22|2|32|0|13|1|23|1|340|0|71|2|"
                   "91|3|14|-0.5|24|-0.5|14|0.5|24|-0.5|14|0.5|24|0.5");
  EXPECT_EQ(w.comparers[0]->description(), "遮罩图元 ");
  EXPECT_EQ(detailed(w).detailTexts(), (std::vector<std::string>{"2.00, 0.00", "0.00, 2.00", ""}));
}

TEST_F(EntitiesFixture, OleFramesCompareOnlyCommonPropertiesThroughTheFactory) {
  const std::string a = "0|OLE2FRAME|8|0|100|AcDbOle2Frame|70|2|3|OLE|10|0|20|5|30|0|11|4|21|0|31|0|71|2|72|0|90|0";
  const std::string b = "0|OLE2FRAME|8|0|100|AcDbOle2Frame|70|2|3|OLE|10|0|20|5|30|0|11|4|21|0|31|0|71|3|72|0|90|0";
  auto da = drawing(a);
  ASSERT_NE(dynamic_cast<const CVkAcDbOleFrame*>(da.comparers[0].get()), nullptr);
  EXPECT_EQ(da.comparers[0]->description(), " OLE2FRAME 图元 ");
  EXPECT_EQ(compare(a, b), " OLE2FRAME 图元 ");
  EXPECT_EQ(compare(a, "0|OLE2FRAME|8|0|62|1|100|AcDbOle2Frame|70|2|10|0|20|5|30|0|11|4|21|0|31|0|71|2"), " OLE2FRAME 图元 颜色不相同,");
  // The OLE2 frame comparer, which the factory never makes, compares the object too.
  auto frame = direct<CVkAcDbOle2Frame>(da);
  EXPECT_EQ(frame->keyText(), "0," + keyDigest("OLE2FRAME,0.00,5.00,0.00,4.00,0.00,0.00"));
  EXPECT_EQ(frame->detailTexts(), (std::vector<std::string>{"2", "0.00", "4.00", "5.00", "", "", ""}));
  auto other = direct<CVkAcDbOle2Frame>(
      drawing("0|OLE2FRAME|8|0|100|AcDbOle2Frame|70|2|10|0|20|6|30|0|11|5|21|0|31|0|71|3"));
  EXPECT_EQ(compareText(*other, *frame),
            " OLE2FRAME 图元 对象类型不一样,OLE对象的实际宽度坐标不一样,OLE对象的实际高度坐标不一样,");
}

TEST_F(EntitiesFixture, UnderlayFlagsAndFile) {
  const std::string a = "0|PDFUNDERLAY|8|0|100|AcDbUnderlayReference|340|50|10|1|20|1|30|0|41|1|42|1|43|1|50|0|280|2|281|100|282|0";
  const std::string b = "0|PDFUNDERLAY|8|0|100|AcDbUnderlayReference|340|50|10|1|20|1|30|0|41|1|42|1|43|1|50|30|280|13|281|50|282|20";
  EXPECT_EQ(compare(a, b), "代理实体图元旋转角不一样,使用剪辑边界不一样,底层的对比值不一样,褪色值不一样,显示底层内容不一样,"
                           "显示inmonochrome底层内容不一样,底层内容调整为当前背景色不一样,");
  auto d = drawing(a, "0|PDFDEFINITION|5|50|100|AcDbUnderlayDefinition|1|plan.pdf|2|1");
  const platform::Entity e = d.db->openEntity(d.db->blockRecord(d.db->modelSpaceId()).entityIds()[0]);
  EXPECT_EQ(e.text(platform::Accessor::underlayFileName), "plan.pdf");
  EXPECT_EQ(detailed(d).detailTexts(),
            (std::vector<std::string>{"0.00", "0", "100", "0", "1", "0", "0", "", "20", "100", "0", "80"}));
}

TEST_F(EntitiesFixture, ViewportMessagesInOrder) {
  const std::string a = "0|VIEWPORT|8|0|100|AcDbViewport|10|5|20|5|30|0|40|10|41|8|68|1|69|2|12|1|22|1|45|8|42|50|50|0|51|0|90|0";
  const std::string b = "0|VIEWPORT|8|0|100|AcDbViewport|10|5|20|5|30|0|40|11|41|9|68|1|69|3|12|2|22|1|45|9|42|35|50|15|51|10|"
                        "90|6|141|10|142|20";
  EXPECT_EQ(compare(a, b), "浮动视口 绘图单位的视口实体窗口高度不一样,绘图单位的视口实体窗口宽度不一样,视图的ID号不一样,"
                           "褪色值不一样,高度不一样,视野中心不一样,扭转角度不一样,在视口的镜头长度不一样,"
                           "前裁剪面是当前打开的视图中不一样,后裁剪面是当前打开的视图中不一样,褪色下限不一样,捕捉角度不一样,");
  EXPECT_EQ(drawing(a).comparers[0]->keyText(), "0," + keyDigest("VIEWPORT,5.00,5.00"));
}

TEST_F(EntitiesFixture, ProxiesHaveNoKey) {
  const std::string proxy = "0|ACAD_PROXY_ENTITY|8|0|100|AcDbProxyEntity|90|498|91|500|92|4|310|0A0B0C0D|93|0|330|1F|340|2A|94|0|95|0|70|0";
  auto d = drawing(proxy);
  ASSERT_NE(dynamic_cast<const CVkCustomEntity*>(d.comparers[0].get()), nullptr);  // the factory's choice
  auto mine = direct<CVkAcDbProxyEntity>(d);
  EXPECT_TRUE(mine->keyText().empty());
  EXPECT_EQ(mine->description(), "代理实体图元 ");
  auto other = direct<CVkAcDbProxyEntity>(drawing(
      "0|ACAD_PROXY_ENTITY|8|0|100|AcDbProxyEntity|90|498|91|501|92|4|310|0A0B0C0E|93|0|330|1F|94|0|95|0|70|1"));
  EXPECT_EQ(compareText(*other, *mine),
            "代理实体图元 实体代理标志位不一样,存储在代理服务器的自定义对象的C++类的名称不一样,"
            "所有参考ObjectIds数组的长度不一样,在代理的图形元文件中显示的数据不一样,");
}
