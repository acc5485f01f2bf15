/* A library that looks like a codec plug-in but lacks GetDllClassObject: the
 * codec host must refuse it and unload it again. */
#include "kestrelon/codec_plugin.h"

KESTRELON_EXPORT void DelDllClassObject(kestrelon_codec** object)
{
    if (object) *object = 0;
}
