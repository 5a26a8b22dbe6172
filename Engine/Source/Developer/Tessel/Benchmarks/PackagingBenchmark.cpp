// Packages a generated cooked tree the way a normal cook run does and prints its speed beside two references
// on the same tree: a plain copy, and the same walk compressing chunk after chunk on one thread. Also times a
// single large package alone, how long making a file takes on this machine, and Debian's pigz compressing
// the same package files on two threads, the tool a user would reach for otherwise.
// Usage: PackagingBenchmark [total MB, default 256] [--keep]

#include "CoreMinimal.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "Misc/Compression.h"
#include "Misc/FileHelper.h"
#include "packaging/CompressCookedFilesVisitor.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{
	using FClock = std::chrono::steady_clock;

	double Seconds(FClock::time_point Start)
	{
		return std::chrono::duration<double>(FClock::now() - Start).count();
	}

	IPlatformFile& PlatformFile()
	{
		return FPlatformFileManager::Get().GetPlatformFile();
	}

	enum class EContent
	{
		Text,
		Binary,
		Noise
	};

	// Bytes that behave like cooked content: names and property text, structured binary with tables of
	// small numbers and floats, and already-compressed texture or audio data.
	void FillContent(std::vector<uint8>& Bytes, size_t Size, EContent Kind, std::mt19937& Random)
	{
		Bytes.resize(Size);
		if (Kind == EContent::Noise)
		{
			for (size_t Index = 0; Index + 4 <= Size; Index += 4)
			{
				const uint32 Word = Random();
				std::memcpy(&Bytes[Index], &Word, 4);
			}
			for (size_t Index = Size & ~size_t(3); Index < Size; ++Index)
			{
				Bytes[Index] = static_cast<uint8>(Random());
			}
			return;
		}
		if (Kind == EContent::Text)
		{
			static const char* Words[] = {"/Game/Mods/Orrery/", "Texture2D'", "StaticMesh", "MaterialInstance",
										  "LODGroup=", "bCastShadow=True ", "RelativeLocation=(X=", "None ",
										  "Blueprint_C", "SoundWave", "ParticleSystem", "PhysicsAsset ",
										  "Engine.", "Tags=(", ")\r\n", "0.000000,", "Lantern_", "Island_"};
			size_t Index = 0;
			while (Index < Size)
			{
				const char* Word = Words[Random() % (sizeof(Words) / sizeof(Words[0]))];
				for (; *Word && Index < Size; ++Word)
				{
					Bytes[Index++] = static_cast<uint8>(*Word);
				}
				if (Random() % 4 == 0)
				{
					const std::string Number = std::to_string(Random() % 100000);
					for (size_t Digit = 0; Digit < Number.size() && Index < Size; ++Digit)
					{
						Bytes[Index++] = static_cast<uint8>(Number[Digit]);
					}
				}
			}
			return;
		}
		// Binary: records of a few small integers, an index that counts up, and floats near each other.
		float Value = 0.0f;
		for (size_t Index = 0; Index < Size;)
		{
			uint8 Record[16];
			const uint32 Counter = static_cast<uint32>(Index / 16);
			Value += static_cast<float>(Random() % 100) * 0.01f;
			const uint32 Small = Random() % 8;
			std::memcpy(Record, &Counter, 4);
			std::memcpy(Record + 4, &Value, 4);
			std::memcpy(Record + 8, &Small, 4);
			const uint32 Flags = (Random() % 16 == 0) ? Random() : 0x00010001;
			std::memcpy(Record + 12, &Flags, 4);
			for (int Byte = 0; Byte < 16 && Index < Size; ++Byte)
			{
				Bytes[Index++] = Record[Byte];
			}
		}
	}

	struct FTree
	{
		int64 Bytes = 0;
		int32 Packages = 0;
		int32 Others = 0;
		FString LargestPackage;
		int64 LargestSize = 0;
	};

	void WriteBytes(const FString& Path, const std::vector<uint8>& Bytes)
	{
		PlatformFile().CreateDirectoryTree(*FPaths::GetPath(Path));
		std::ofstream Out(Path.ToUtf8(), std::ios::binary);
		Out.write(reinterpret_cast<const char*>(Bytes.data()), static_cast<std::streamsize>(Bytes.size()));
	}

	// Many small packages of 4 KB to 1 MB (more small than large), a few large ones of 32 to 64 MB, some
	// files that are copied as they are, and the two description files; a third of the bytes of each kind.
	FTree Generate(const FString& Root, int64 TotalBytes)
	{
		std::mt19937 Random(20240611);
		FTree Tree;
		std::vector<uint8> Bytes;
		const double Scale = static_cast<double>(TotalBytes) / (256.0 * 1024 * 1024);
		const int64 LargeSizes[] = {64, 48, 40};
		int32 Kind = 0;
		for (int32 Index = 0; Index < 3; ++Index)
		{
			const int64 Size = std::max<int64>(static_cast<int64>(LargeSizes[Index] * 1024 * 1024 * Scale), 4096);
			FillContent(Bytes, static_cast<size_t>(Size), static_cast<EContent>(Kind++ % 3), Random);
			const FString Path = Root / FString::Printf(TEXT("Content/Maps/Large%d.umap"), Index);
			WriteBytes(Path, Bytes);
			Tree.Bytes += Size;
			++Tree.Packages;
			if (Size > Tree.LargestSize)
			{
				Tree.LargestSize = Size;
				Tree.LargestPackage = Path;
			}
		}
		const TCHAR* Folders[] = {TEXT("Content/Meshes"), TEXT("Content/Textures"), TEXT("Content/Blueprints"),
								  TEXT("Content/Audio"), TEXT("Content/Materials/Instances"), TEXT("Content/FX")};
		std::uniform_real_distribution<double> LogSize(std::log(4096.0), std::log(1024.0 * 1024.0));
		while (Tree.Bytes < TotalBytes)
		{
			const int64 Size = std::min<int64>(static_cast<int64>(std::exp(LogSize(Random))), TotalBytes - Tree.Bytes + 4096);
			FillContent(Bytes, static_cast<size_t>(Size), static_cast<EContent>(Kind++ % 3), Random);
			const FString Folder = Folders[Random() % 6];
			const bool bPackage = Random() % 10 != 0;
			const FString Name = bPackage ? FString::Printf(TEXT("%s/Asset_%05d.uasset"), *Folder, Tree.Packages)
										  : FString::Printf(TEXT("%s/Asset_%05d.uexp"), *Folder, Tree.Others);
			WriteBytes(Root / Name, Bytes);
			Tree.Bytes += Size;
			++(bPackage ? Tree.Packages : Tree.Others);
		}
		FillContent(Bytes, 300, EContent::Text, Random);
		WriteBytes(Root / TEXT("mod.info"), Bytes);
		WriteBytes(Root / TEXT("modmeta.info"), Bytes);
		Tree.Others += 2;
		return Tree;
	}

	class FCopyVisitor : public IPlatformFile::FDirectoryVisitor
	{
	public:
		FCopyVisitor(const FString& InFrom, const FString& InTo) : From(InFrom), To(InTo) {}
		bool Visit(const TCHAR* Path, bool bIsDirectory) override
		{
			if (!bIsDirectory)
			{
				IFileManager::Get().Copy(*(To / FString(Path).Mid(From.Len())), Path, true, false);
			}
			return true;
		}

	private:
		FString From;
		FString To;
	};

	double TimePackaging(const FString& From, const FString& To, bool bParallel)
	{
		FCompression::SetParallelCompression(bParallel);
		const FClock::time_point Start = FClock::now();
		FCompressCookedFilesVisitor Visitor(From, To);
		PlatformFile().IterateDirectoryRecursively(*From, Visitor);
		const double Elapsed = Seconds(Start);
		FCompression::SetParallelCompression(true);
		return Elapsed;
	}

	double TimeSingleFile(const FString& Source, const FString& Destination, bool bParallel)
	{
		FCompression::SetParallelCompression(bParallel);
		const FClock::time_point Start = FClock::now();
		FArchive* Reader = IFileManager::Get().CreateFileReader(*Source);
		FArchive* Writer = IFileManager::Get().CreateFileWriter(*Destination);
		Writer->SerializeCompressed(Reader, Reader->TotalSize(), COMPRESS_ZLIB, true);
		delete Reader;
		delete Writer;
		const double Elapsed = Seconds(Start);
		FCompression::SetParallelCompression(true);
		return Elapsed;
	}

	// Copies the package files alone into Folder (untimed), then times "pigz -z -p 2" over them, keeping the
	// originals as the walk does. Negative when pigz is missing or fails.
	double TimePigz(const FString& From, const FString& Folder)
	{
		if (std::system("command -v pigz >/dev/null 2>&1") != 0)
		{
			return -1.0;
		}
		PlatformFile().IterateDirectoryRecursively(*From, [&](const TCHAR* Path, bool bIsDirectory) {
			const FString File(Path);
			if (!bIsDirectory && !File.EndsWith(TEXT(".uexp")) && !File.EndsWith(TEXT(".info")))
			{
				IFileManager::Get().Copy(*(Folder / File.Mid(From.Len())), Path, true, false);
			}
			return true;
		});
		const std::string Command = "pigz -z -p 2 -k -r '" + Folder.ToUtf8() + "'";
		const FClock::time_point Start = FClock::now();
		const int Status = std::system(Command.c_str());
		const double Elapsed = Seconds(Start);
		return Status == 0 ? Elapsed : -1.0;
	}

	// Compares two trees file by file; the count of files that differ or are missing.
	int32 CountDifferences(const FString& A, const FString& B, int32& OutFiles, int64& OutBytes)
	{
		int32 Differences = 0;
		OutFiles = 0;
		OutBytes = 0;
		PlatformFile().IterateDirectoryRecursively(*A, [&](const TCHAR* Path, bool bIsDirectory) {
			if (!bIsDirectory)
			{
				TArray<uint8> Left;
				TArray<uint8> Right;
				const FString Other = B / FString(Path).Mid(A.Len());
				const bool bRead = FFileHelper::LoadFileToArray(Left, Path) && FFileHelper::LoadFileToArray(Right, *Other);
				if (!bRead || Left.Num() != Right.Num() ||
					std::memcmp(Left.GetData(), Right.GetData(), static_cast<size_t>(Left.Num())) != 0)
				{
					++Differences;
				}
				++OutFiles;
				OutBytes += Left.Num();
			}
			return true;
		});
		return Differences;
	}

	// What making one file through the writer (temporary, rename) costs here.
	double TimeFileCreation(const FString& Folder, int32 Count)
	{
		const FClock::time_point Start = FClock::now();
		for (int32 Index = 0; Index < Count; ++Index)
		{
			FArchive* Writer = IFileManager::Get().CreateFileWriter(*(Folder / FString::Printf(TEXT("f%d.txt"), Index)));
			uint8 Byte = '1';
			Writer->Serialize(&Byte, 1);
			delete Writer;
		}
		return Seconds(Start) / Count;
	}
}

int main(int ArgC, char** ArgV)
{
	int64 TotalMB = 256;
	bool bKeep = false;
	for (int Index = 1; Index < ArgC; ++Index)
	{
		if (std::strcmp(ArgV[Index], "--keep") == 0)
		{
			bKeep = true;
		}
		else
		{
			TotalMB = std::max<int64>(std::atoll(ArgV[Index]), 1);
		}
	}
	const double MB = 1024.0 * 1024.0;
	char Pattern[] = "/tmp/tessel-packaging-XXXXXX";
	const FString Work = FString::FromUtf8(mkdtemp(Pattern));
	const FString Staged = Work / TEXT("Staged");

	std::printf("Packaging benchmark in %s, %u hardware threads\n", Work.ToUtf8().c_str(),
				std::thread::hardware_concurrency());
	FClock::time_point Start = FClock::now();
	const FTree Tree = Generate(Staged, TotalMB * 1024 * 1024);
	std::printf("Generated %.1f MB: %d packages, %d other files (%.2f s)\n", Tree.Bytes / MB, Tree.Packages, Tree.Others,
				Seconds(Start));

	const double CreateCost = TimeFileCreation(Work / TEXT("Creation"), 500);
	PlatformFile().DeleteDirectoryRecursively(*(Work / TEXT("Creation")));

	// Each package leaves two files (the ".z" through its temporary and a move, and the size file); every
	// other file one copy.
	const int32 FilesMade = 2 * Tree.Packages + Tree.Others;
	const double CreationSeconds = FilesMade * CreateCost;

	const double Copy = [&] {
		const FClock::time_point CopyStart = FClock::now();
		FCopyVisitor Visitor(Staged, Work / TEXT("Copy"));
		PlatformFile().IterateDirectoryRecursively(*Staged, Visitor);
		return Seconds(CopyStart);
	}();
	PlatformFile().DeleteDirectoryRecursively(*(Work / TEXT("Copy")));
	const double Serial = TimePackaging(Staged, Work / TEXT("Serial"), false);
	const double Parallel = TimePackaging(Staged, Work / TEXT("Parallel"), true);
	const double Pigz = TimePigz(Staged, Work / TEXT("Pigz"));
	PlatformFile().DeleteDirectoryRecursively(*(Work / TEXT("Pigz")));

	int32 Files = 0;
	int64 PackedBytes = 0;
	const int32 Differences = CountDifferences(Work / TEXT("Serial"), Work / TEXT("Parallel"), Files, PackedBytes);

	const FString SingleSerialOut = Work / TEXT("single-serial.z");
	const FString SingleParallelOut = Work / TEXT("single-parallel.z");
	const double SingleSerial = TimeSingleFile(Tree.LargestPackage, SingleSerialOut, false);
	const double SingleParallel = TimeSingleFile(Tree.LargestPackage, SingleParallelOut, true);
	TArray<uint8> SerialBytes;
	TArray<uint8> ParallelBytes;
	FFileHelper::LoadFileToArray(SerialBytes, *SingleSerialOut);
	FFileHelper::LoadFileToArray(ParallelBytes, *SingleParallelOut);
	const bool bSingleSame = SerialBytes.Num() == ParallelBytes.Num() &&
							 std::memcmp(SerialBytes.GetData(), ParallelBytes.GetData(), SerialBytes.Num()) == 0;

	const double Input = Tree.Bytes / MB;
	std::printf("\nWhole tree, %.1f MB in, %.1f MB out (%.1f%%), %d files out\n", Input, PackedBytes / MB,
				100.0 * PackedBytes / Tree.Bytes, Files);
	std::printf("  plain copy                 %7.2f s  %8.1f MB/s\n", Copy, Input / Copy);
	std::printf("  one thread, chunk by chunk %7.2f s  %8.1f MB/s\n", Serial, Input / Serial);
	std::printf("  packaging walk (parallel)  %7.2f s  %8.1f MB/s\n", Parallel, Input / Parallel);
	std::printf("  walk / one thread          %7.2fx\n", Serial / Parallel);
	std::printf("  walk / plain copy          %7.2fx of the copy's speed\n", Copy / Parallel);
	if (Pigz > 0)
	{
		std::printf("  pigz -z -p 2, packages     %7.2f s  %8.1f MB/s (the walk takes %.2fx its time)\n", Pigz,
					Input / Pigz, Parallel / Pigz);
	}
	else
	{
		std::printf("  pigz -z -p 2: not installed, no reference\n");
	}
	std::printf("  output identical to one thread: %s (%d files differ)\n", Differences == 0 ? "yes" : "NO", Differences);
	std::printf("\nSingle package of %.1f MB\n", Tree.LargestSize / MB);
	std::printf("  one thread, chunk by chunk %7.2f s  %8.1f MB/s\n", SingleSerial, Tree.LargestSize / MB / SingleSerial);
	std::printf("  parallel                   %7.2f s  %8.1f MB/s\n", SingleParallel, Tree.LargestSize / MB / SingleParallel);
	std::printf("  parallel / one thread      %7.2fx, output identical: %s\n", SingleSerial / SingleParallel,
				bSingleSame ? "yes" : "NO");
	std::printf("\nCreating files: %.3f ms each; the walk makes %d files, about %.2f s (%.0f%% of the walk, %.0f%% "
				"of the one-thread run)\n",
				CreateCost * 1000.0, FilesMade, CreationSeconds, 100.0 * CreationSeconds / Parallel,
				100.0 * CreationSeconds / Serial);

	if (!bKeep)
	{
		PlatformFile().DeleteDirectoryRecursively(*Work);
	}
	return Differences == 0 && bSingleSame ? 0 : 1;
}
