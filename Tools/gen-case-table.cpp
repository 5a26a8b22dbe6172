// Prints Core's case mapping table (Engine/Source/Runtime/Core/Private/CaseTable.inl) from the C library's
// C.UTF-8 locale, the mapping the tool has always used, so that folding no longer needs a locale at run time
// and gives the same answers on every system. Run again only to follow a newer Unicode:
//   g++ -std=c++20 -O2 Tools/gen-case-table.cpp -o /tmp/gen-case-table && /tmp/gen-case-table > Engine/Source/Runtime/Core/Private/CaseTable.inl
#include <clocale>
#include <cstdio>
#include <cwctype>
#include <locale.h>
#include <vector>

namespace
{
	struct FRun
	{
		unsigned First;
		unsigned Last;
		unsigned Stride;
		int Delta;
	};

	// Units from 0x80 up (ASCII is folded by hand) whose mapping is another unit of the same plane; surrogates
	// never map.
	std::vector<FRun> Runs(locale_t Locale, bool bLower)
	{
		std::vector<int> Delta(0x10000, 0);
		for (unsigned Unit = 0x80; Unit <= 0xFFFF; ++Unit)
		{
			if (Unit >= 0xD800 && Unit <= 0xDFFF)
			{
				continue;
			}
			const wint_t Mapped = bLower ? towlower_l(Unit, Locale) : towupper_l(Unit, Locale);
			if (Mapped != Unit && Mapped <= 0xFFFF)
			{
				Delta[Unit] = static_cast<int>(Mapped) - static_cast<int>(Unit);
			}
		}
		// Greedy runs: a unit, then every Stride-th unit after it with the same delta, where the units between
		// map nowhere (stride 1 for blocks like Cyrillic, 2 for alternating pairs like Latin Extended-A). Runs
		// never overlap, so that a lookup needs only the last run that starts at or before a unit.
		std::vector<FRun> Out;
		unsigned Unit = 0x80;
		while (Unit <= 0xFFFF)
		{
			if (Delta[Unit] == 0)
			{
				++Unit;
				continue;
			}
			FRun Best{Unit, Unit, 1, Delta[Unit]};
			for (unsigned Stride : {1u, 2u})
			{
				unsigned Last = Unit;
				while (Last + Stride <= 0xFFFF && Delta[Last + Stride] == Delta[Unit])
				{
					bool bGapClear = true;
					for (unsigned Between = Last + 1; Between < Last + Stride; ++Between)
					{
						bGapClear = bGapClear && Delta[Between] == 0;
					}
					if (!bGapClear)
					{
						break;
					}
					Last += Stride;
				}
				if ((Last - Unit) / Stride > (Best.Last - Best.First) / Best.Stride)
				{
					Best = FRun{Unit, Last, Stride, Delta[Unit]};
				}
			}
			Out.push_back(Best);
			Unit = Best.Last + 1;
		}
		return Out;
	}

	// The runs come in order of their first unit, as the lookup's binary search needs them.
	void Print(const char* Name, const std::vector<FRun>& Table)
	{
		std::printf("constexpr FCaseRun %s[] = {\n", Name);
		for (const FRun& Run : Table)
		{
			std::printf("\t{0x%04X, 0x%04X, %u, %d},\n", Run.First, Run.Last, Run.Stride, Run.Delta);
		}
		std::printf("};\n");
	}
}

int main()
{
	locale_t Locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(0));
	if (!Locale)
	{
		std::fprintf(stderr, "no C.UTF-8 locale\n");
		return 1;
	}
	std::printf("// Made by Tools/gen-case-table.cpp; do not edit by hand.\n");
	std::printf("// Each run {First, Last, Stride, Delta}: every Stride-th unit from First to Last maps to itself plus Delta.\n");
	Print("LowerRuns", Runs(Locale, true));
	Print("UpperRuns", Runs(Locale, false));
	return 0;
}
