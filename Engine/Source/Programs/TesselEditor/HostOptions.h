#pragma once

// The host's command line, the same on every system: the kit, and the options that need no window.

namespace HostOptions
{
	// Sets the engine's command line and paths from the arguments. True when the run ends here, with OutExit
	// its exit code: a usage error, a kit without a project, -ListMods, or -Cook without -Screenshot.
	bool RunWithoutWindow(int ArgC, char** ArgV, int& OutExit);
}
