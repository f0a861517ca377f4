#include "tests/display/gl_log.h"

#ifdef _WIN32  // not imported: windows_gl_imports.cpp finds them in this program
#include <windows.h>
#undef WINGDIAPI
#define WINGDIAPI
#endif

#pragma GCC visibility push(default)
#include <GL/gl.h>
#include <GL/glu.h>
#pragma GCC visibility pop

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

namespace kvtest {

std::string FakeGL::TakeLog() { return std::exchange(log, {}); }

FakeGL& GL() {
  static FakeGL state;
  return state;
}

namespace {

template <class... Arguments>
void Note(const char* name, const Arguments&... arguments) {
  GL().log += name;
  ((GL().log += fmt::format(" {:g}", double(arguments))), ...);
  GL().log += "; ";
}

std::string NameOf(GLenum state) {
  static const std::map<GLenum, const char*> names = {{GL_LIGHTING, "LIGHTING"},
                                                      {GL_LINE_STIPPLE, "LINE_STIPPLE"},
                                                      {GL_BLEND, "BLEND"},
                                                      {GL_POINT_SMOOTH, "POINT_SMOOTH"}};
  const auto found = names.find(state);
  return found == names.end() ? fmt::format("CLIP_PLANE{}", state - GL_CLIP_PLANE0) : found->second;
}

void SetColor(float r, float g, float b, float a) {
  const float color[] = {r, g, b, a};
  std::copy(color, color + 4, GL().color);
}

bool g_generated = false;
GLUquadric* const kQuadric = reinterpret_cast<GLUquadric*>(&g_generated);

}  // namespace
}  // namespace kvtest

using kvtest::GL, kvtest::Note;

extern "C" {

void glBegin(GLenum mode) { Note("Begin", mode); }
void glEnd() { Note("End"); }
void glVertex3f(GLfloat x, GLfloat y, GLfloat z) { Note("V", x, y, z); }
void glNormal3f(GLfloat x, GLfloat y, GLfloat z) { Note("N", x, y, z); }
void glRasterPos3f(GLfloat x, GLfloat y, GLfloat z) { Note("RasterPos", x, y, z); }
void glColor3f(GLfloat r, GLfloat g, GLfloat b) {
  Note("Color", r, g, b);
  kvtest::SetColor(r, g, b, 1);
}
void glColor4f(GLfloat r, GLfloat g, GLfloat b, GLfloat a) {
  Note("Color", r, g, b, a);
  kvtest::SetColor(r, g, b, a);
}
void glMaterialfv(GLenum face, GLenum name, const GLfloat* c) {
  Note(face == GL_FRONT && name == GL_AMBIENT_AND_DIFFUSE ? "Material" : "odd material", c[0], c[1], c[2], c[3]);
}
void glGetFloatv(GLenum name, GLfloat* out) {
  if (name == GL_CURRENT_COLOR) std::copy(GL().color, GL().color + 4, out);
}
void glGetBooleanv(GLenum name, GLboolean* out) {
  *out = name == GL_DEPTH_WRITEMASK ? GL().depthWrites : GL().enabled.contains(name);
}
GLboolean glIsEnabled(GLenum name) { return GL().enabled.contains(name); }
void glEnable(GLenum name) {
  GL().log += "+" + kvtest::NameOf(name) + "; ";
  GL().enabled.insert(name);
}
void glDisable(GLenum name) {
  GL().log += "-" + kvtest::NameOf(name) + "; ";
  GL().enabled.erase(name);
}
void glDepthMask(GLboolean on) {
  Note("DepthMask", on);
  GL().depthWrites = on;
}
void glBlendFunc(GLenum source, GLenum target) { Note("BlendFunc", source, target); }
void glLineStipple(GLint factor, GLushort pattern) { Note("LineStipple", factor, pattern); }
void glLineWidth(GLfloat width) { Note("LineWidth", width); }
void glPointSize(GLfloat size) { Note("PointSize", size); }
void glClear(GLbitfield mask) { Note(mask == GL_DEPTH_BUFFER_BIT ? "ClearDepth" : "odd clear"); }
void glPushMatrix() { Note("Push"); }
void glPopMatrix() { Note("Pop"); }
void glTranslatef(GLfloat x, GLfloat y, GLfloat z) { Note("Translate", x, y, z); }
void glRotatef(GLfloat angle, GLfloat x, GLfloat y, GLfloat z) { Note("Rotate", angle, x, y, z); }
void glListBase(GLuint base) { Note("ListBase", base); }
void glCallLists(GLsizei count, GLenum type, const void* lists) {
  Note(type == GL_UNSIGNED_SHORT ? "CallLists" : "odd lists", count,
       count > 0 ? *static_cast<const GLushort*>(lists) : 0);
}
GLuint glGenLists(GLsizei count) {
  Note("GenLists", count);
  kvtest::g_generated = true;
  return GL().nextList;
}
GLenum glGetError() {
  const bool after = std::exchange(kvtest::g_generated, false);
  return after ? GL().error : 99U;  // an old error before
}
void glDeleteLists(GLuint first, GLsizei count) { Note("DeleteLists", first, count); }
void glNewList(GLuint list, GLenum mode) { Note(mode == GL_COMPILE ? "NewList" : "odd list", list); }
void glPushClientAttrib(GLbitfield mask) { Note(mask == GL_CLIENT_PIXEL_STORE_BIT ? "PushStore" : "odd push"); }
void glPopClientAttrib() { Note("PopStore"); }
void glPixelStorei(GLenum, GLint) {}
// The bits as rows of '.' and '#', from the top.
void glBitmap(GLsizei width, GLsizei height, GLfloat x, GLfloat y, GLfloat advance, GLfloat up, const GLubyte* bits) {
  Note(bits ? "Bitmap" : "no bits", width, height, x, y, advance, up);
  for (int row = height - 1; row >= 0; --row) {
    for (int i = 0; i < width; ++i) GL().log += bits[row * ((width + 7) / 8) + i / 8] & 0x80 >> i % 8 ? '#' : '.';
    GL().log += '\n';
  }
}
void glEndList() { Note("EndList"); }
void glCallList(GLuint list) { Note("CallList", list); }

GLUquadric* gluNewQuadric() {
  Note("NewQuadric");
  return kvtest::kQuadric;
}
void gluDeleteQuadric(GLUquadric*) { Note("DeleteQuadric"); }
void gluQuadricNormals(GLUquadric*, GLenum normals) { Note("Normals", normals); }
void gluQuadricOrientation(GLUquadric*, GLenum orientation) { Note("Orientation", orientation); }
void gluCylinder(GLUquadric*, GLdouble base, GLdouble top, GLdouble height, GLint slices, GLint stacks) {
  Note("Cylinder", base, top, height, slices, stacks);
}
void gluSphere(GLUquadric*, GLdouble radius, GLint slices, GLint stacks) { Note("Sphere", radius, slices, stacks); }

}  // extern "C"
