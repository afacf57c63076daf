#pragma once

#include <CLI/CLI.hpp>
#include <functional>

/// A command of the tool: what parses its arguments, and what does its work once they are parsed.
struct Command {
    CLI::App* parser;
    std::function<void()> run;
};

/// `velmar export`: mesh files become a scene.
Command addExportCommand(CLI::App& tool);
/// `velmar info`: what a mesh file or a scene holds, and a picture of a mesh.
Command addInfoCommand(CLI::App& tool);
/// `velmar convert`: a mesh file becomes a vmmesh file, or all in a folder do.
Command addConvertCommand(CLI::App& tool);
