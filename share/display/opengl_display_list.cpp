// The batches of OpenGL's display lists.
#include <limits>

#include "platform/opengl.h"
#include "share/display/opengl_display.h"

QFOpenGlDisplayList::~QFOpenGlDisplayList() { QFOpenGlDisplayList::Delete(); }

int QFOpenGlDisplayList::Initialise(LONGLONG count) {
  Delete();
  const LONGLONG lists = count / m_BatchSize + 1;
  if (lists > std::numeric_limits<GLsizei>::max()) return 0;
  glGetError();  // forgets an old one
  m_FirstList = glGenLists(GLsizei(lists));
  if (glGetError() == GL_NO_ERROR && m_FirstList != 0) {
    m_Count = lists;
    return 1;
  }
  Delete();
  return 0;
}

int QFOpenGlDisplayList::Begin() {
  m_CallsInBatch = 0;
  m_CurrentList = 0;
  glNewList(m_FirstList, GL_COMPILE);
  return 1;
}

int QFOpenGlDisplayList::End() {
  glEndList();
  return 1;
}

int QFOpenGlDisplayList::Delete() {
  if (m_FirstList) glDeleteLists(m_FirstList, GLsizei(m_Count));
  m_FirstList = 0;
  m_Count = 0;
  m_CallsInBatch = 0;
  m_CurrentList = 0;
  return 1;
}

int QFOpenGlDisplayList::Render(const FRPosition& position) {
  if (!m_FirstList) return 0;
  const auto x = GLfloat(position.x()), y = GLfloat(position.y()), z = GLfloat(position.z());
  glTranslatef(x, y, z);
  for (UINT i = 0; i < UINT(m_Count); ++i) glCallList(m_FirstList + i);
  glTranslatef(-x, -y, -z);
  return 1;
}

int QFOpenGlDisplayList::Tick() {
  if (!m_FirstList || ++m_CallsInBatch <= m_BatchSize) return 0;
  glEndList();
  m_CallsInBatch = 0;
  if (++m_CurrentList >= m_Count) return 0;
  glNewList(m_FirstList + UINT(m_CurrentList), GL_COMPILE);
  return 1;
}
