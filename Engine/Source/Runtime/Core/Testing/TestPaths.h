#pragma once

// Paths into the build and the checkout that a test program needs. Each program defines the ones it uses in a
// source the build generates for it (tessel_test_paths in the top CMakeLists.txt), so that no other source
// carries the checkout's folder.

#define TESSEL_TEST_PATH(Name, Value) const char* const TestPaths::Name = Value;

namespace TestPaths
{
	// Programs the build made.
	extern const char* const CookCommandlet;
	extern const char* const FakeChild;
	extern const char* const SteamCmd;
	extern const char* const Uploader;
	extern const char* const TesselCmd;
	extern const char* const TesselEditor;
	// The folder the tool's module library is in.
	extern const char* const ModuleDir;

	// The checkout, its demo kit and its item template.
	extern const char* const SourceDir;
	extern const char* const DemoKitDir;
	extern const char* const WorkshopTemplate;
	// The expected bytes of the byte-exact tests, one file each.
	extern const char* const GoldenDir;

	// The build folder, where tests leave their pictures.
	extern const char* const BuildDir;
}
