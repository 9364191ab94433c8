// The last resort: a text for a person, when no message tool is usable.
#ifndef ZAREL_SYSTEM_BOX_H
#define ZAREL_SYSTEM_BOX_H

namespace Zarel {

using ErrorBox = void (*)(const char* title, const char* text);

// Replaces the box and returns the former one; null brings back standard error.
ErrorBox setErrorBox(ErrorBox box);
// Shows a text in the box in use.
void showErrorBox(const char* title, const char* text);

} // namespace Zarel

#endif
