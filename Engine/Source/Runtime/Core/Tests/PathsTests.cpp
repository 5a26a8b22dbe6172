#include "CoreMinimal.h"
#include "TempDirectory.h"

#include <gtest/gtest.h>

TEST(PathsTests, KitFoldersFollowTheRootAndTheProject)
{
	FTempDirectory Kit;
	Kit.WriteFile(TEXT("Orrery/Orrery.uproject"), "{}");
	Kit.WriteFile(TEXT("Engine/Binaries/placeholder"), "");
	FPaths::SetKitRoot(Kit.Get() + TEXT("/"));
	EXPECT_EQ(FPaths::RootDir(), Kit.Get());
	EXPECT_EQ(FPaths::ProjectName(), FString(TEXT("Orrery")));
	EXPECT_EQ(FPaths::EngineDir(), Kit / TEXT("Engine"));
	EXPECT_EQ(FPaths::GameContentDir(), Kit / TEXT("Orrery/Content"));
	EXPECT_EQ(FPaths::GameSavedDir(), Kit / TEXT("Orrery/Saved"));
}

TEST(PathsTests, PiecesOfAPath)
{
	EXPECT_EQ(FPaths::GetExtension(TEXT("/a.b/Maps/Alpha.umap")), FString(TEXT("umap")));
	EXPECT_EQ(FPaths::GetExtension(TEXT("/a.b/Maps/Alpha.umap"), true), FString(TEXT(".umap")));
	EXPECT_EQ(FPaths::GetExtension(TEXT("/a.b/Maps/Alpha")), FString());
	EXPECT_EQ(FPaths::GetExtension(TEXT("x.uasset.z"), true), FString(TEXT(".z")));
	EXPECT_EQ(FPaths::GetPath(TEXT("/Out/Base/x.uasset.z")), FString(TEXT("/Out/Base")));
	EXPECT_EQ(FPaths::GetPath(TEXT("name")), FString());
	EXPECT_EQ(FPaths::GetCleanFilename(TEXT("C:\\Kit\\preview.jpg")), FString(TEXT("preview.jpg")));
	EXPECT_EQ(FPaths::GetBaseFilename(TEXT("/a/Beta.umap")), FString(TEXT("Beta")));
	EXPECT_EQ(FPaths::Combine(FString(TEXT("/Kit/Content")), TEXT("Mods"), TEXT("x")), FString(TEXT("/Kit/Content/Mods/x")));
}

TEST(PathsTests, RelativePathsBecomeFullAgainstTheBase)
{
	EXPECT_TRUE(FPaths::IsRelative(TEXT("steam_appid.txt")));
	EXPECT_TRUE(FPaths::IsRelative(TEXT("../x")));
	EXPECT_FALSE(FPaths::IsRelative(TEXT("/x")));
	EXPECT_FALSE(FPaths::IsRelative(TEXT("C:/x")));
	EXPECT_FALSE(FPaths::IsRelative(TEXT("\\\\server\\share")));

	EXPECT_EQ(FPaths::ConvertRelativePathToFull(TEXT("/Kit/Bin"), TEXT("steam_appid.txt")),
			  FString(TEXT("/Kit/Bin/steam_appid.txt")));
	EXPECT_EQ(FPaths::ConvertRelativePathToFull(TEXT("/Kit/Bin"), TEXT("../Saved/./x\\y")), FString(TEXT("/Kit/Saved/x/y")));
	EXPECT_EQ(FPaths::ConvertRelativePathToFull(TEXT("/Kit"), TEXT("/abs//path/")), FString(TEXT("/abs/path")));
	EXPECT_EQ(FPaths::ConvertRelativePathToFull(TEXT("/"), TEXT("../..")), FString(TEXT("/")));

	FPaths::SetBaseDir(TEXT("/Base/Dir/"));
	EXPECT_EQ(FPaths::ConvertRelativePathToFull(TEXT("a.txt")), FString(TEXT("/Base/Dir/a.txt")));
	FPaths::SetBaseDir(FString());
}
