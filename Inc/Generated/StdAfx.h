#pragma once

// A generated table names this header first. It has nothing to give; a project with a header of this name
// puts its own folder in front.
