#pragma once

#include "velmarstring.h"

#include <string>
#include <utility>

/// What the library throws. No class derives from another or from `std::exception`, so a host that
/// wants to see them catches them by type. On Windows, use the library made for the host's compiler; with Microsoft's,
/// compile with /EHs. The class names the layer that failed, the message describes the failure.

namespace Velmar {

/// Bad meshes, bad files, the render buffer, the scene writer.
class VelmarException {
  public:
    explicit VelmarException(const String& text) : message(text) {}
    const String& getMessage() const { return message; }

  private:
    String message;
};

/// Streams, mesh loaders, the mesh dispatcher.
class Exception {
  public:
    explicit Exception(std::string text) : message(std::move(text)) {}
    const std::string& getMessage() const { return message; }

  private:
    std::string message;
};

/// A model's materials that don't fit its mesh.
class SceneParserExcep {
  public:
    explicit SceneParserExcep(const String& text) : message(text) {}
    const String& getMessage() const { return message; }

  private:
    String message;
};

/// An unknown rotation type in a model.
class SceneLoaderExcep {
  public:
    explicit SceneLoaderExcep(std::string text) : message(std::move(text)) {}
    const std::string& getMessage() const { return message; }

  private:
    std::string message;
};

} // namespace Velmar

namespace FileUtils {

class FileUtilsExcep {
  public:
    explicit FileUtilsExcep(std::string text) : message(std::move(text)) {}
    const std::string& getMessage() const { return message; }

  private:
    std::string message;
};

} // namespace FileUtils

namespace PlatformUtils {

class PlatformUtilsExcep {
  public:
    explicit PlatformUtilsExcep(std::string text) : message(std::move(text)) {}
    const std::string& getMessage() const { return message; }

  private:
    std::string message;
};

} // namespace PlatformUtils

/// Construction of a `TransformPath`.
class TransformPathExcep {
  public:
    explicit TransformPathExcep(std::string text) : message(std::move(text)) {}
    const std::string& getMessage() const { return message; }

  private:
    std::string message;
};

/// Lookup of a material name in the OBJ reader.
class NameMapExcep {
  public:
    explicit NameMapExcep(std::string text) : message(std::move(text)) {}
    const std::string& getMessage() const { return message; }

  private:
    std::string message;
};
