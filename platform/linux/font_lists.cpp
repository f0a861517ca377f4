// Display lists of OpenGL with the characters of a font.
#include "platform/errors.h"
#include "platform/linux/drawing_objects.h"
#include "platform/linux/errno_status.h"
#include "platform/opengl.h"

namespace {

constexpr DWORD kCharacters = 0x10000;

// How glBitmap reads memory, in the scope of the object: rows in whole bytes.
class BytewiseRows {
 public:
  BytewiseRows() {
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    for (const GLenum setting : {GL_UNPACK_LSB_FIRST, GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS})
      glPixelStorei(setting, 0);
  }
  ~BytewiseRows() { glPopClientAttrib(); }
  BytewiseRows(const BytewiseRows&) = delete;
  BytewiseRows& operator=(const BytewiseRows&) = delete;
};

}  // namespace

BOOL wglUseFontBitmapsW(HDC dc, DWORD first, DWORD count, DWORD listBase) {
  DeviceContext* const context = FindContext(dc);
  if (!context) return FALSE;
  if (first >= kCharacters || count > kCharacters - first) return FailWithStatus(ERROR_INVALID_PARAMETER);
  std::vector<CharacterBitmap> characters(count);
  for (DWORD i = 0; i < count; ++i) {
    const LOGFONTW* const font = context->font.object->Description();
    if (!context->canvas->RenderCharacter(char16_t(first + i), font, characters[i]))
      return FailWithStatus(ERROR_NOT_SUPPORTED);
  }
  const BytewiseRows rows;
  for (DWORD i = 0; i < count; ++i) {
    const CharacterBitmap& each = characters[i];
    static constexpr GLubyte kNoBits = 0;  // null is an error to Mesa, also without pixels
    glNewList(listBase + i, GL_COMPILE);
    if (each.bits.empty() && each.advance != 0) {  // a blank; Mesa moves on only after a bitmap with a pixel
      glBitmap(1, 1, 0, 0, GLfloat(each.advance), 0, &kNoBits);
    } else {
      glBitmap(each.width, each.height, GLfloat(each.originX), GLfloat(each.originY), GLfloat(each.advance), 0,
               each.bits.empty() ? &kNoBits : each.bits.data());
    }
    glEndList();
  }
  return TRUE;
}
