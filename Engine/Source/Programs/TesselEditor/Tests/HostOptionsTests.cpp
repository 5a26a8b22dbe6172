// The host program as a mod author starts it: each option run as a real child on a kit made in a temporary
// folder, with its exit code and what it prints read back.

#include "CoreMinimal.h"
#include "ProgramRun.h"
#include "TestKit.h"
#include "TestPaths.h"
#include "TestPrograms.h"

#include <gtest/gtest.h>

namespace
{
	struct FHost
	{
		FHost()
		{
			Kit.InstallCookCommandlet();
			Kit.AddMod(TEXT("Islands"), {TEXT("Alpha.umap"), TEXT("Beta.umap"), TEXT("Props/Crate.uasset")});
			Kit.AddMod(TEXT("Sky Lanterns"), {TEXT("Festival.umap")});
		}
		// The window runs offscreen, on a screen the size of a common monitor, and keeps its settings in the
		// temporary folder.
		FCommandRun Run(std::vector<std::string> Args, std::map<std::string, std::string> Environment = {}) const
		{
			Environment.emplace("QT_QPA_PLATFORM", "offscreen:configfile=" + std::string(TestPaths::SourceDir) + "/Tools/offscreen-screen.json");
			Environment.emplace("XDG_CONFIG_HOME", (Kit.Root() / TEXT("config")).ToUtf8());
			return RunProgram(TestPrograms::Path(TEXT("TesselEditor.exe"), TestPaths::TesselEditor).ToUtf8(),
							  FCommandSetup{std::move(Args), std::move(Environment), std::string()});
		}
		std::string KitOption() const { return "-Kit=" + Kit.Root().ToUtf8(); }
		FString Output() const { return Kit.Root() / TEXT("ModTools/Output"); }

		FTestKit Kit;
	};

	bool Holds(const std::string& Text, const std::string& Needle)
	{
		return Text.find(Needle) != std::string::npos;
	}

	// The width a PNG file gives in its header, or -1 for a file that is no PNG.
	int32 PngWidth(const FString& Path)
	{
		const std::string Bytes = FTempDirectory::ReadBytes(Path);
		if (Bytes.size() < 24 || Bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0 || Bytes.compare(12, 4, "IHDR") != 0)
		{
			return -1;
		}
		int32 Width = 0;
		for (int Index = 16; Index < 20; ++Index)
		{
			Width = Width << 8 | static_cast<unsigned char>(Bytes[Index]);
		}
		return Width;
	}
}

TEST(HostOptionsTests, WithoutAKitOrAProjectTheHostSaysWhatIsMissing)
{
	FHost Host;
	const FCommandRun NoKit = Host.Run({"-ListMods"});
	EXPECT_EQ(NoKit.ExitCode, 2);
	EXPECT_TRUE(Holds(NoKit.Stderr, "usage: TesselEditor -Kit=<kit folder>")) << NoKit.Stderr;
	EXPECT_EQ(NoKit.Stdout, "");

	const FCommandRun EmptyKit = Host.Run({"-Kit=", "-ListMods"});
	EXPECT_EQ(EmptyKit.ExitCode, 2);

	FTempDirectory NotAKit;
	const FCommandRun NoProject = Host.Run({"-Kit=" + NotAKit.Get().ToUtf8(), "-ListMods"});
	EXPECT_EQ(NoProject.ExitCode, 1);
	EXPECT_TRUE(Holds(NoProject.Stderr, "No project (a folder with <Name>.uproject) under " + NotAKit.Get().ToUtf8())) << NoProject.Stderr;
}

TEST(HostOptionsTests, ListModsPrintsEachFolderWithItsMaps)
{
	FHost Host;
	const FCommandRun List = Host.Run({Host.KitOption(), "-ListMods"});
	ASSERT_EQ(List.ExitCode, 0) << List.Stderr;
	EXPECT_TRUE(Holds(List.Stdout, "Mods under ")) << List.Stdout;
	EXPECT_TRUE(Holds(List.Stdout, ": 2\n")) << List.Stdout;
	EXPECT_TRUE(Holds(List.Stdout, "  Islands  maps: Alpha,Beta\n")) << List.Stdout;
	EXPECT_TRUE(Holds(List.Stdout, "  Sky Lanterns  maps: Festival\n")) << List.Stdout;
	// Listing changes nothing on disk.
	EXPECT_FALSE(FPaths::DirectoryExists(Host.Output() / TEXT("Islands")));

	// A Mods.db that doesn't read: the folders are listed, and stderr and the exit code say the records are not.
	Host.Kit.WriteFile(TEXT("Orrery/Saved/Mods.db"), "{\"Mods\": [");
	const FCommandRun Broken = Host.Run({Host.KitOption(), "-ListMods"});
	EXPECT_EQ(Broken.ExitCode, 1);
	EXPECT_TRUE(Holds(Broken.Stdout, "  Islands  maps: Alpha,Beta\n")) << Broken.Stdout;
	EXPECT_TRUE(Holds(Broken.Stderr, "Orrery/Saved/Mods.db: ")) << Broken.Stderr;
	EXPECT_TRUE(Holds(Broken.Stderr, "; its records are not listed")) << Broken.Stderr;
	EXPECT_EQ(FTempDirectory::ReadBytes(Host.Kit.Root() / TEXT("Orrery/Saved/Mods.db")), "{\"Mods\": [");
}

TEST(HostOptionsTests, CookExitsWithZeroOnlyForASuccessfulJob)
{
	FHost Host;
	const FCommandRun Missing = Host.Run({Host.KitOption(), "-Cook=Nowhere"});
	EXPECT_EQ(Missing.ExitCode, 1);
	EXPECT_TRUE(Holds(Missing.Stderr, "No mod folder named Nowhere")) << Missing.Stderr;

	const FCommandRun Cook = Host.Run({Host.KitOption(), "-Cook=Islands"});
	ASSERT_EQ(Cook.ExitCode, 0) << Cook.Stdout << Cook.Stderr;
	EXPECT_TRUE(Holds(Cook.Stdout, "************************** Cooking Started **************************\nCook Job: Platform 'WindowsNoEditor'")) << Cook.Stdout;
	EXPECT_TRUE(Holds(Cook.Stdout, "Quillon Dev Kit: Job Successful!!\n")) << Cook.Stdout;
	EXPECT_TRUE(FPaths::FileExists(Host.Output() / TEXT("Islands/WindowsNoEditor/Alpha.umap.z")));
	EXPECT_TRUE(FPaths::FileExists(Host.Output() / TEXT("Islands/mod.info")));

	// A commandlet that never says it succeeded: the dialog's other text, and a failing exit code for a script.
	const FCommandRun Unsure = Host.Run({Host.KitOption(), "-Cook=Islands"}, {{"TESSEL_COOK_MODE", "no-success"}});
	EXPECT_EQ(Unsure.ExitCode, 1);
	EXPECT_TRUE(Holds(Unsure.Stdout, "Quillon Dev Kit: Job Finsihed (possible errors)!!\n")) << Unsure.Stdout;

	const FCommandRun Crash = Host.Run({Host.KitOption(), "-Cook=Islands"}, {{"TESSEL_COOK_MODE", "crash"}});
	EXPECT_EQ(Crash.ExitCode, 1);
	EXPECT_TRUE(Holds(Crash.Stdout, "Quillon Dev Kit: Job Finsihed (possible errors)!!\n")) << Crash.Stdout;
}

TEST(HostOptionsTests, ScreenshotSavesADrawnWindowOrFailsWhereItCannotWrite)
{
	FHost Host;
	const FString Picture = Host.Kit.Root() / TEXT("tool.png");
	const FCommandRun Shot = Host.Run({Host.KitOption(), "-Screenshot=" + Picture.ToUtf8()});
	ASSERT_EQ(Shot.ExitCode, 0) << Shot.Stdout << Shot.Stderr;
	EXPECT_TRUE(Holds(Shot.Stdout, "Screenshot saved to " + Picture.ToUtf8())) << Shot.Stdout;
	EXPECT_GE(PngWidth(Picture), 800);

	const FString Nowhere = Host.Kit.Root() / TEXT("no such folder/tool.png");
	const FCommandRun Failed = Host.Run({Host.KitOption(), "-Screenshot=" + Nowhere.ToUtf8()});
	EXPECT_EQ(Failed.ExitCode, 1);
	EXPECT_TRUE(Holds(Failed.Stdout, "Could not save " + Nowhere.ToUtf8())) << Failed.Stdout;
}
