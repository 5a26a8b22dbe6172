#pragma once

// An archive over memory that, like a pipe, knows neither its position nor its size: Tell and TotalSize answer
// INDEX_NONE and it can't seek. A reader can't check a length against what is left and must find the end by
// reading; a writer can't go back to patch what it wrote.

#include "Serialization/Archive.h"

class FSizelessArchive : public FArchive
{
public:
	FSizelessArchive(TArray<uint8>& Bytes, bool bInLoading) : Inner(Bytes, bInLoading)
	{
		bLoading = bInLoading;
		bSaving = !bInLoading;
	}
	void Serialize(void* Data, int64 Num) override
	{
		Inner.Serialize(Data, Num);
		if (Inner.IsError())
		{
			SetError();
		}
	}

private:
	FMemoryArchive Inner;
};
