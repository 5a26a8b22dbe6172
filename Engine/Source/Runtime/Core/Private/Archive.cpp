#include "Serialization/Archive.h"

#include <cstring>

void FMemoryArchive::Serialize(void* Data, int64 Num)
{
	if (Num <= 0)
	{
		return;
	}
	if (IsSaving())
	{
		if (Offset + Num > Bytes.Num())
		{
			Bytes.SetNum(static_cast<int32>(Offset + Num));
		}
		std::memcpy(Bytes.GetData() + Offset, Data, static_cast<size_t>(Num));
		Offset += Num;
		return;
	}
	if (Offset + Num > Bytes.Num())
	{
		std::memset(Data, 0, static_cast<size_t>(Num));
		SetError();
		return;
	}
	std::memcpy(Data, Bytes.GetData() + Offset, static_cast<size_t>(Num));
	Offset += Num;
}
