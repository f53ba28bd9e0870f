#include "Library/DMXObjectBase.h"

IMPLEMENT_HEADLESS_ABSTRACT_CLASS(UDMXObjectBase, UObject, "DMXObjectBase")

void UDMXObjectBase::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Super::SerializeHeadlessState(Ar);
}
