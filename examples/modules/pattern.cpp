// A kind of pattern of a module's own: a ring of instances about the Z axis.
#include <kvshare/kvshare.h>

#include <cstdio>
#include <memory>
#include <numbers>

// begin kind
// Instance n is turned by n times the full turn divided by the count.
class Ring : public QFPatternInfo {
  DECLARE_SERIAL(Ring)

 public:
  static constexpr QFeObjectPatternType kType = QFeObjectPatternType(7);

  explicit Ring(DWORD count = 0) : m_count(count) {}

  void Serialize(CArchive& ar) override {
    ar.SerializeClass(RUNTIME_CLASS(Ring));
    ar.GetObjectSchema();  // there is one schema only; reading it ends the record
    QFPatternInfo::Serialize(ar);
    if (ar.IsStoring()) {
      ar << m_count;
      return;
    }
    ar >> m_count;
    if (m_count > kMost) m_count = 0;  // a file can hold any number
  }
  int Rebuild() override { return m_count > 0; }
  QFPatternInfo* Clone() override {
    auto copy = std::make_unique<Ring>(m_count);
    copy->CopyParameters(this);
    return copy.release();
  }
  LONGLONG GetNumPatternInstances() override { return m_count; }
  QFeObjectPatternInstanceStatus GetTransfForInst(LONGLONG instance, FRTransf& transform) override {
    const QFeObjectPatternInstanceStatus status = GetInstanceStatus(instance);
    if (status != ePatternInstanceNone)
      transform = GetRotateTransf(2 * std::numbers::pi * double(instance) / m_count, FRVector(0, 0, 1));
    return status;
  }
  QFeObjectPatternInstanceStatus GetInstanceStatus(LONGLONG instance) override {
    return instance >= 0 && instance < m_count ? ePatternInstanceActive : ePatternInstanceNone;
  }
  QFeObjectPatternType GetPatternType() override { return kType; }

 private:
  static constexpr DWORD kMost = 100000;

  DWORD m_count;
};

IMPLEMENT_SERIAL(Ring, QFPatternInfo, VERSIONABLE_SCHEMA | 1)
// end kind

// begin node
// A hole that can be repeated.
class Hole : public QFObject {
 public:
  explicit Hole(const FRPosition& centre) : m_centre(centre) {}
  CString GetClassNameW() override { return _T("Hole"); }
  int GetIsPatternSupported() override { return 1; }
  int GetRefPointForPattern(FRPosition& position) override {
    position = m_centre;
    return 1;
  }

 private:
  FRPosition m_centre;
};
// end node

// begin main
int main() {
  InitShareDll();
  Hole hole(FRPosition(30, 0, 5));
  if (!hole.CreatePattern()) return 1;
  QFObjectPatternMgr* const manager = hole.GetPatternMgr();
  manager->SetPatternInfo(new Ring(4), /*deleteOld=*/1);  // takes ownership
  if (!manager->Rebuild()) return 1;
  for (int n = 0; n < manager->GetNumActiveInstances(); ++n) {
    FRTransf transform;
    int instance = 0;
    manager->GetTransfForActiveInstance(n, transform, instance);
    const FRPosition at = manager->GetPatternInfo()->GetRefPosOfObject() * transform;
    std::printf("instance %d at %.1f %.1f %.1f\n", instance, at.x(), at.y(), at.z());
  }
}
// end main
