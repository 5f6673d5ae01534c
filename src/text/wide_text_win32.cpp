// Placeholder: being written.
#include <windows.h>
