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
		// What is there is handed out and the rest is zeros; the position still moves to the end, so that a
		// reader looping until AtEnd always gets there.
		const int64 Available = Offset < Bytes.Num() ? Bytes.Num() - Offset : 0;
		if (Available > 0)
		{
			std::memcpy(Data, Bytes.GetData() + Offset, static_cast<size_t>(Available));
		}
		std::memset(static_cast<uint8*>(Data) + Available, 0, static_cast<size_t>(Num - Available));
		Offset = Offset > Bytes.Num() ? Offset : Bytes.Num();
		SetError();
		return;
	}
	std::memcpy(Data, Bytes.GetData() + Offset, static_cast<size_t>(Num));
	Offset += Num;
}
