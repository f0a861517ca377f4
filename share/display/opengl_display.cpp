#include "share/display/opengl_display.h"

#include <algorithm>
#include <cmath>

#include "platform/opengl.h"
#include "share/core/document_callbacks.h"
#include "share/core/registry_keys.h"
#include "share/settings/application_settings.h"

namespace {

constexpr GLushort kDashes = 255;  // eight pixels drawn, eight not
constexpr GLfloat kTransparent = 0.5F;
constexpr int kClipPlanes = 6;
constexpr int kOnTop = 1;   // the depth buffer is cleared
constexpr int kHidden = 2;  // the drawing is tested against the host's depths
constexpr int kMostCorners = 3;
constexpr GLuint kFirstCharacterList = 1000;  // not reserved: the host must not use the lists 1000 to 1254
constexpr DWORD kCharacters = 255;

int StoredRenderMode() {
  const QFSettingsKey* const settings = GetAppSettingsCB();
  const auto* const group = settings ? DYNAMIC_DOWNCAST(QFDisplaySettings, settings->GetKey(_T("Display"))) : nullptr;
  if (!group) return kOnTop;
  int mode = 0;
  group->GetValue(_T("UseHardwareRendering"), mode);
  return mode;
}

// A switch of the registry; the default if it is not stored.
int StoredSwitch(LPCTSTR path, LPCTSTR name, int fallback) {
  QFSettingsKey key(_T("Debug"), path);
  key.AddValue(name, fallback);
  int value = fallback;
  if (key.RestoreValuesFromRegistry()) key.GetValue(name, value);
  return value;
}

void Vertex(const FRPosition& point) { glVertex3f(GLfloat(point.x()), GLfloat(point.y()), GLfloat(point.z())); }

void Segment(const FRPosition& from, const FRPosition& to) {
  glBegin(GL_LINES);
  Vertex(from);
  Vertex(to);
  glEnd();
}

GLfloat Channel(DWORD color, int shift) { return GLfloat(color >> shift & 0xFF) / 255.0F; }

// Lit and unlit primitives get the same colour.
void UseColorAsMaterial() {
  GLfloat color[4] = {};
  glGetFloatv(GL_CURRENT_COLOR, color);
  glMaterialfv(GL_FRONT, GL_AMBIENT_AND_DIFFUSE, color);
}

// Turns the Z axis to the direction. A turn straight back is about the X axis.
void RotateZTo(const FRUnitVector& direction) {
  const double cosine = std::clamp(FRZAxis % direction, -1.0, 1.0);
  const FRVector axis = FRZAxis * direction;
  if (cosine < 0 && axis.len() < RESNOR) return glRotatef(180, 1, 0, 0);
  glRotatef(GLfloat(std::acos(cosine) * RADIAN_TO_DEGREE), GLfloat(axis.x()), GLfloat(axis.y()), GLfloat(axis.z()));
}

void LineStipple(int dashed) {
  if (!dashed) return glDisable(GL_LINE_STIPPLE);
  glLineStipple(1, kDashes);
  glEnable(GL_LINE_STIPPLE);
}

}  // namespace

// Lighting is off in the scope of the object, if the host has it on.
class QFOpenGLDisplay::Unlit {
 public:
  explicit Unlit(const QFOpenGLDisplay& display) : m_bLit(display.m_bSavedLighting) {
    if (m_bLit) glDisable(GL_LIGHTING);
  }
  ~Unlit() {
    if (m_bLit) glEnable(GL_LIGHTING);
  }
  Unlit(const Unlit&) = delete;
  Unlit& operator=(const Unlit&) = delete;

 private:
  const bool m_bLit;
};

QFOpenGLDisplay::QFOpenGLDisplay() : m_RenderMode(StoredRenderMode()) {
  m_bDrawText = StoredSwitch(kProductDebugKey, _T("OpenGLDrawText"), 1) != 0;
  m_bAdvanceOptions = StoredSwitch(kVersionDebugKey, _T("EnableAdvanceOpenGLOptions"), 0) != 0;
}

QFOpenGLDisplay::~QFOpenGLDisplay() = default;

// ---- state

int QFOpenGLDisplay::InitialiseGraphics() {
  if (m_bInitialised || !m_pDisplayData) return 1;
  glGetFloatv(GL_CURRENT_COLOR, m_SavedColor);
  m_bBlending = m_pDisplayData->GetIsTransparent() != 0;
  const DWORD color = m_pDisplayData->GetColor();
  const GLfloat red = Channel(color, 0), green = Channel(color, 8), blue = Channel(color, 16);
  glColor3f(red, green, blue);
  if (m_bBlending) glColor4f(red, green, blue, kTransparent);
  UseColorAsMaterial();
  glGetBooleanv(GL_DEPTH_WRITEMASK, &m_bSavedDepthMask);
  glGetBooleanv(GL_LIGHTING, &m_bSavedLighting);
  for (int i = 0; i < kClipPlanes; ++i) {
    m_SavedClipPlanes[i] = glIsEnabled(GL_CLIP_PLANE0 + GLenum(i));
    if (m_SavedClipPlanes[i]) glDisable(GL_CLIP_PLANE0 + GLenum(i));
  }
  LineStipple(m_bLineDashed);
  glLineWidth(GLfloat(m_pDisplayData->GetLineWidth()));
  if (m_bBlending) {
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_BLEND);
    glDepthMask(GL_FALSE);
  }
  m_bInitialised = 1;
  return 1;
}

void QFOpenGLDisplay::SetHostColor() const {
  glColor3f(m_SavedColor[0], m_SavedColor[1], m_SavedColor[2]);
  if (m_bBlending) glColor4f(m_SavedColor[0], m_SavedColor[1], m_SavedColor[2], kTransparent);
}

// Undoes what InitialiseGraphics did: the state may have changed since.
int QFOpenGLDisplay::UninitialiseGraphics() {
  if (!m_bInitialised) return 1;
  if (m_bBlending) {
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
  }
  SetHostColor();
  if (m_bSavedDepthMask || m_bBlending) glDepthMask(m_bSavedDepthMask);
  if (m_bSavedLighting) glEnable(GL_LIGHTING);
  if (m_bLineDashed) glDisable(GL_LINE_STIPPLE);
  for (int i = 0; i < kClipPlanes; ++i)
    if (m_SavedClipPlanes[i]) glEnable(GL_CLIP_PLANE0 + GLenum(i));
  m_bInitialised = 0;
  return 1;
}

void QFOpenGLDisplay::SetLineWidthOnlyByGLCall(int width) { glLineWidth(GLfloat(width)); }

void QFOpenGLDisplay::SetLineStyle(int dashed) {
  if (dashed == m_bLineDashed) return;
  QFBaseDisplay::SetLineStyle(dashed);
  LineStipple(dashed);
}

void QFOpenGLDisplay::SetRenderMode(int mode) {
  if (mode == m_RenderMode) return;
  m_RenderMode = mode;
  m_bDepthCleared = 0;
}

void QFOpenGLDisplay::BeginShadedDisplay() { SetRenderMode(kHidden); }
void QFOpenGLDisplay::EndShadedDisplay() { SetRenderMode(StoredRenderMode()); }

// ---- primitives

void QFOpenGLDisplay::Prepare() {
  if (!m_bDepthCleared && m_RenderMode == kOnTop) glClear(GL_DEPTH_BUFFER_BIT);
  m_bDepthCleared = 1;
  if (m_pBatches) m_pBatches->Tick();
}

void QFOpenGLDisplay::DrawLine(const FRPosition& from, const FRPosition& to) {
  Prepare();
  const Unlit unlit(*this);
  Segment(from, to);
}

void QFOpenGLDisplay::DrawArrow(const FRPosition& from, const FRPosition& to) {
  Prepare();
  const Unlit unlit(*this);
  Segment(from, to);
  const double head = from.distance(to) / 3;
  glPushMatrix();
  GLUquadric* const quadric = gluNewQuadric();
  glTranslatef(GLfloat(to.x()), GLfloat(to.y()), GLfloat(to.z()));
  RotateZTo(normalise(to - from));
  gluCylinder(quadric, head / 2, 0, head, 20, 5);
  glPopMatrix();
  // The quadric is not deleted; the sequence of calls is kept for existing modules.
}

void QFOpenGLDisplay::DrawEllipse(const FRPosition& centre, double a, double b, const FRTransf& camera) {
  const double larger = std::max(a, b), scale = camera.GetScalingMatrix();
  const double radius = larger > 0 && std::abs(scale) > RESABS ? larger / scale : larger / 2;
  UseColorAsMaterial();
  glPushMatrix();
  glTranslatef(GLfloat(centre.x()), GLfloat(centre.y()), GLfloat(centre.z()));
  GLUquadric* const quadric = gluNewQuadric();
  gluQuadricNormals(quadric, GLU_SMOOTH);
  gluQuadricOrientation(quadric, GLU_OUTSIDE);
  gluSphere(quadric, radius, 20, 20);
  glPopMatrix();
  gluDeleteQuadric(quadric);
}

void QFOpenGLDisplay::DrawPlaneEllipse(const FRPosition& centre, double a, double) {
  Prepare();
  const Unlit unlit(*this);
  glEnable(GL_POINT_SMOOTH);
  glPointSize(GLfloat(a));
  glBegin(GL_POINTS);
  Vertex(centre);
  glEnd();
}

void QFOpenGLDisplay::DrawTriangles(unsigned mode, const CList<FRPosition>& points,
                                    const CList<FRUnitVector>& normals) {
  Prepare();
  if (points.GetCount() > kMostCorners) return;
  if (!normals.IsEmpty()) {
    glBegin(mode);
    POSITION normal = normals.GetHeadPosition();
    for (POSITION at = points.GetHeadPosition(); at;) {
      if (normal) {
        const FRUnitVector& n = normals.GetNext(normal);
        glNormal3f(GLfloat(n.x()), GLfloat(n.y()), GLfloat(n.z()));
      }
      Vertex(points.GetNext(at));
    }
    glEnd();
    return;
  }
  const Unlit unlit(*this);
  glBegin(mode);
  for (POSITION at = points.GetHeadPosition(); at;) Vertex(points.GetNext(at));
  glEnd();
  glBegin(mode);
  for (POSITION at = points.GetTailPosition(); at;) Vertex(points.GetPrev(at));
  glEnd();
}

void QFOpenGLDisplay::DrawTriangle(const CList<FRPosition>& points, const CList<FRUnitVector>& normals) {
  DrawTriangles(GL_TRIANGLES, points, normals);
}

void QFOpenGLDisplay::DrawPolygon(const CList<FRPosition>& points, const CList<FRUnitVector>& normals) {
  DrawTriangles(GL_POLYGON, points, normals);
}

void QFOpenGLDisplay::DrawPolyline(AFR_Lin_List*& points, double& scale, const QFDisplayTransforms& transforms) {
  Prepare();
  if (!points) return;
  const Unlit unlit(*this);
  glBegin(GL_LINES);
  FRPosition last;
  bool first = true;
  for (const FRPosition& point : *points) {
    const FRPosition moved = transforms.Apply(point / scale);
    if (!first) {
      Vertex(last);
      Vertex(moved);
    }
    first = false;
    last = moved;
  }
  glEnd();
}

void QFOpenGLDisplay::DrawPolyline(const std::vector<FRPosition>& points, unsigned mode) {
  Prepare();
  if (points.size() < 2) return;
  const Unlit unlit(*this);
  glBegin(mode);
  for (const FRPosition& point : points) Vertex(point);
  glEnd();
}

void QFOpenGLDisplay::DrawPolyline(const CList<FRPosition>& points, unsigned mode) {
  Prepare();
  if (points.GetCount() < 2) return;
  const Unlit unlit(*this);
  glBegin(mode);
  for (POSITION at = points.GetHeadPosition(); at;) Vertex(points.GetNext(at));
  glEnd();
}

void QFOpenGLDisplay::DrawPolyline(const CList<FRPosition>& points) { DrawPolyline(points, GL_LINE_STRIP); }

// The lists of the first text stay for all later texts.
void QFOpenGLDisplay::DrawText(const FRPosition& position, const CString& text) {
  Prepare();
  if (!m_bDrawText) return;
  const Unlit unlit(*this);
  glRasterPos3f(GLfloat(position.x()), GLfloat(position.y()), GLfloat(position.z()));
  CDC* const dc = m_bFontListsBuilt || !m_pDisplayData ? nullptr : m_pDisplayData->GetDC();
  CFont* const font = dc ? dc->SelectObject(m_pDisplayData->GetFont()) : nullptr;
  if (!m_bFontListsBuilt) {
    wglUseFontBitmapsW(dc ? dc->m_hDC : nullptr, 0, kCharacters, kFirstCharacterList);
    glListBase(kFirstCharacterList);
  }
  glCallLists(text.GetLength(), GL_UNSIGNED_SHORT, text.GetString());
  if (font) dc->SelectObject(font);
  m_bFontListsBuilt = 1;
}

// ---- display lists

QFDisplayList* QFOpenGLDisplay::GenerateDisplayList(LONGLONG count) {
  auto list = std::make_unique<QFOpenGlDisplayList>();
  return list->Initialise(count) ? list.release() : nullptr;
}

int QFOpenGLDisplay::BeginDisplayList(QFDisplayList* list) {
  if (m_pActiveList || !list) return 0;
  m_pActiveList = list;
  m_pBatches = dynamic_cast<QFOpenGlDisplayList*>(list);
  list->Begin();
  return 1;
}

int QFOpenGLDisplay::EndDisplayList(QFDisplayList* list) {
  if (!m_pActiveList || (list && list != m_pActiveList)) return 0;
  m_pActiveList->End();
  m_pActiveList = nullptr;
  m_pBatches = nullptr;
  return 1;
}

int QFOpenGLDisplay::RenderDisplayList(QFDisplayList* list, const FRPosition& position) {
  return list ? list->Render(position) : 0;
}
