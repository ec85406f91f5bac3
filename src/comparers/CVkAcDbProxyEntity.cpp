// Proxy entities: no key; compared on what the proxy keeps of its original object. The class record that a
// proxy's class number points to is not kept by the database, so the class number stands for the class's
// name, and the original DXF name and the application's description stay empty.
#include "comparers/CVkAcDbProxyEntity.h"

#include "comparers/CapturesBlocks.h"

namespace {

using platform::Accessor;

void noKey(const platform::Entity&, const platform::Matrix3d&, const CVkAcadEntityBase&, KeyTexts&) {}

const DetailProperty kDetails[] = {
    {"实体代理标志位不一样,", capture::int1<Accessor::proxyDataFormat>},                                  // proxyFlags
    {"存储在代理服务器的自定义对象的C++类的名称不一样,", capture::int1<Accessor::proxyApplicationClassId>},  // originalClassName
    {"存储在代理自定义实体的DXF文件的名字不一样,", capture::unreadable},                                    // originalDxfName
    {"存储在代理实体中的类的应用程序描述的字符串不一样,", capture::unreadable},                              // applicationDescription
    {"所有参考ObjectIds数组的长度不一样,", capture::int1<Accessor::proxyObjectIdCount>},                    // getReferences
    {"在代理的图形元文件中显示的数据不一样,", capture::text<Accessor::proxyGraphicsData>},                   // graphicsMetafileType
};

const ComparerTraits kTraits{noKey, kDetails};

}  // namespace

CVkAcDbProxyEntity::CVkAcDbProxyEntity() : CVkDetailedEntity(kTraits) {}

void CVkAcDbProxyEntity::load(const platform::Entity& entity, platform::Matrix3d transform) {
  CVkAcadEntityBase::load(entity, transform);
  if (isCompared(kCodeDetails)) loadDetail(entity, transform);
}
