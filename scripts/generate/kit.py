"""VelmarKit: the functions of the table with a status as result, and a getter for each setter."""
import re

from table import ROOT, Argument, Function, Table
from text import WIDTH, listed, notice, one_line, sentence, wrapped

#: Fields that the setters set, in the class of the handle, in the order of the setter's arguments.
FIELDS = {
    "VelmarMesh_NormalSmoothing": ["normal_smoothing"],
    "VelmarMesh_ViewDependentSubdivision": ["view_dependent_subdivision"],
    "VelmarMesh_MaxNumSubdivisions": ["max_num_subdivisions"],
    "VelmarCamera_SetLensRadius": ["aperture_radius"],
    "VelmarCamera_SetAutofocus": ["autofocus"],
    "VelmarCamera_SetExposureDuration": ["exposure_duration"],
    "VelmarCamera_SetLensSensorDistance": ["lens_sensor_dist"],
    "VelmarCamera_SetLensShiftRightDistance": ["lens_shift_right_distance"],
    "VelmarCamera_SetLensShiftUpDistance": ["lens_shift_up_distance"],
    "VelmarCamera_SetSensorWidth": ["sensor_width"],
    "VelmarCamera_SetFocusDistance": ["focus_distance"],
    "VelmarCamera_SetForwards": ["forwards.x", "forwards.y", "forwards.z"],
    "VelmarCamera_SetUp": ["up.x", "up.y", "up.z"],
    "VelmarRenderSettings_Width": ["width.value"],
    "VelmarRenderSettings_Height": ["height.value"],
    "VelmarRenderSettings_SuperSampleFactor": ["super_sample_factor.value"],
    "VelmarRenderSettings_HaltTime": ["halt_time.value"],
    "VelmarRenderSettings_HaltSamplesPerPixel": ["halt_samples_per_pixel.value"],
    "VelmarRenderSettings_ImageSavePeriod": ["image_save_period.value"],
    "VelmarRenderSettings_Metropolis": ["metropolis.value"],
    "VelmarRenderSettings_Bidirectional": ["bidirectional.value"],
    "VelmarRenderSettings_Dithering": ["dithering.value"],
    "VelmarRenderSettings_Vignetting": ["vignetting.value"],
    "VelmarRenderSettings_ShadowPass": ["shadow_pass.value"],
    "VelmarRenderSettings_RenderForegroundAlpha": ["render_foreground_alpha.value"],
    "VelmarRenderSettings_InfoOverlay": ["info_overlay.value"],
    "VelmarRenderSettings_DepthPass": ["depth_channel.value"],
    "VelmarRenderSettings_MaterialIdTracer": ["material_id_channel.value"],
    "VelmarTonemapping_SetType": ["tone_mapper_kind"],
    "VelmarTonemapping_SetScale": ["scale"],
    "VelmarTonemapping_SetPreScale": ["pre_scale"],
    "VelmarTonemapping_SetPostScale": ["post_scale"],
    "VelmarTonemapping_SetBurn": ["burn"],
    "VelmarTonemapping_SetIso": ["film_iso"],
    "VelmarTonemapping_EvAdjust": ["ev_adjust"],
}
#: Functions that the kit implements by functions of its own, because the library's don't report their failures.
OWN = {"VelmarScene_WriteToXML", "VelmarMesh_WriteToFile", "velmar_write_mesh_to_file", "VelmarContext_Initialize",
       "VelmarRenderer_Create", "VelmarRenderer_UpdateScene", "VelmarBackground_Delete"}
#: The files of the calls, and the families in each.
GROUPS = {
    "Content": ["scene", "mesh", "model", "material", "creators"],
    "Setting": ["background", "camera", "rendersettings", "tonemapping"],
    "Rendering": ["context", "renderer"],
}
#: What is checked beside each argument by itself.
CHECKS = {
    "VelmarModel_SetTransformation": "checkKeyFrame(model, index);",
    "VelmarModel_SetMaterials": "checkMaterials(count, materials);",
    "VelmarRenderer_InitializeWithScene": "checkContext(context);",
    "VelmarMesh_Build": "checkFaces(mesh);",
}


def files(table: Table) -> dict[str, str]:
    return {
        "kit/velmarkit/calls.h": calls_header(table),
        "kit/velmarkit/getters.h": getters_header(table),
        **{f"kit/{name}Calls.cpp": calls_source(table, families) for name, families in GROUPS.items()},
        "kit/Getters.cpp": getters_source(table),
        "kit/VelmarKit.def": export_list(table),
    }


def kit_name(name: str) -> str:
    return re.sub(r"^(Velmar|velmar_)", "VelmarKit_", name)


def result_type(function: Function) -> str:
    kind = function.returns.type
    return "" if kind == "void" or function.name == "VelmarRenderer_UpdateScene" else kind


def kit_arguments(function: Function) -> list[str]:
    arguments = ["..." if a.is_variadic else f"{a.type} {a.name}" for a in function.arguments]
    return arguments + ([f"{result_type(function)}* result"] if result_type(function) else [])


def declaration(function: Function) -> list[str]:
    return listed(kit_arguments(function) or ["void"], f"VELMARKIT_API int32_t {kit_name(function.name)}(", ");")


def calls_header(table: Table) -> str:
    lines = [f"/* {notice()} */", "#pragma once", "", '#include "base.h"', "", "/*"]
    about = """The functions of velmarapi.h, with a status as result: 0, or a VelmarKitStatus and a text in
        VelmarKit_LastError. What a function of velmarapi.h returns is stored through the last argument, which may be null
        except for a new object; after a failure it isn't touched. Handles are those of velmarapi.h."""
    lines += [*wrapped(one_line(about), " * ", " * "), " */"]
    for family in table.families:
        for function in family.functions:
            lines += ["", f"/** As {function.name}. */", *declaration(function)]
    return "\n".join(lines) + "\n"


def check(argument: Argument, function: Function) -> str:
    kind, name = argument.type, argument.name
    if function.name.endswith("_Delete"):
        return f"checkUnowned({name});" if kind != "void*" else f"checkUnowned(static_cast<VelmarMaterial*>({name}));"
    if kind == "const char*":
        return f'checkPath({name}, "{name}");' if name == "path" and not function.is_setter else f'checkText({name}, "{name}");'
    if kind.endswith("**") or (kind.startswith("const ") and kind.endswith("*")):
        counted = "count" in argument.shape and not argument.shape[0].isdigit() or argument.shape.find("* count") > 0
        return f'checkArray(count, {name}, "{name}");' if counted else f'checkPointer({name}, "{name}");'
    if kind.startswith("Velmar") and kind.endswith("*"):
        return f'checkHandle({name}, "{name}");'
    return ""


def body(function: Function) -> list[str]:
    passed = ", ".join(argument.name for argument in function.arguments)
    checks = [text for text in (check(argument, function) for argument in function.arguments) if text]
    if function.name in CHECKS:
        checks.append(CHECKS[function.name])
    call = f"{function.name}({passed})"
    if function.family.name in ("context", "renderer"):
        # An exception of the renderer library that the function passes on.
        call = f"callLibrary([&] {{ return {call}; }})"
    if result_type(function):
        call = f"store(result, {call})"
    if result_type(function).startswith("Velmar"):
        checks.append('checkPointer(result, "result");')
    return guarded(function, [*checks, f"{call};"])


def guarded(function: Function, statements: list[str]) -> list[str]:
    """The body of a call, broken as clang-format breaks it."""
    begin = f"    return guarded(Subject::{function.family.name}, [&] {{"
    if len(statements) == 1 and len(f"{begin} {statements[0]} }});") <= WIDTH:
        return [f"{begin} {statements[0]} }});"]
    return [begin, *(f"        {statement}" for statement in statements), "    });"]


def calls_source(table: Table, families: list[str]) -> str:
    calls_library = "renderer" in families
    lines = [f"// {notice()}", "", '#include "kit/Checks.h"', '#include "kit/Failures.h"', '#include "kit/velmarkit.h"', ""]
    if calls_library:
        lines += ['#include "renderer/LibraryCall.h"', "", "using Velmar::callLibrary;"]
    lines += ["using namespace Velmar::Kit;", "", 'extern "C" {', ""]
    for function in table.functions:
        if function.name in OWN or function.family.name not in families:
            continue
        lines += listed(kit_arguments(function) or ["void"], f"int32_t {kit_name(function.name)}(", ") {")
        lines += [*body(function), "}", ""]
    return "\n".join(lines + ['} // extern "C"']) + "\n"


def getter_name(function: Function) -> str:
    family, verb = kit_name(function.name).rsplit("_", 1)
    return f"{family}_Get{verb.removeprefix('Set')}"


def getter_arguments(function: Function) -> list[str]:
    handle = function.arguments[0]
    return [f"const {handle.type} {handle.name}"] + [f"{a.type}* {a.name}" for a in function.values]


def getters_header(table: Table) -> str:
    lines = [f"/* {notice()} */", "#pragma once", "", '#include "base.h"', "",
             "/* What the setters of velmarapi.h set. Any of the pointers for values may be null. */"]
    for function in table.functions:
        if function.name in FIELDS and not function.same_as:
            text = f"Gets {sentence(function.sets)}"
            if function.family.name == "rendersettings":
                text += " Zero if unset."
            lines += ["", *[line for line in wrapped(f"{text} */", "/** ", "    ")]]
            lines += listed(getter_arguments(function), f"VELMARKIT_API int32_t {getter_name(function)}(", ");")
    return "\n".join(lines) + "\n"


def getters_source(table: Table) -> str:
    lines = [f"// {notice()}", "", '#include "kit/Checks.h"', '#include "kit/Failures.h"', '#include "kit/velmarkit.h"',
             "", "using namespace Velmar::Kit;", "", 'extern "C" {', ""]
    for function in table.functions:
        if function.name not in FIELDS or function.same_as:
            continue
        handle = function.arguments[0].name
        lines += listed(getter_arguments(function), f"int32_t {getter_name(function)}(", ") {")
        statements = [f'const auto& object = objectOf({handle}, "{handle}");']
        statements += [f"store({argument.name}, object.{field});"
                       for argument, field in zip(function.values, FIELDS[function.name], strict=True)]
        lines += [*guarded(function, statements), "}", ""]
    return "\n".join(lines + ['} // extern "C"']) + "\n"


def export_list(table: Table) -> str:
    """The names of all headers: those generated here, and those written by hand."""
    own = re.findall(r"^VELMARKIT_API .*?\b(VelmarKit_\w+)\(", (ROOT / "kit/velmarkit.h").read_text(encoding="utf-8"), re.M)
    calls = [kit_name(function.name) for function in table.functions]
    getters = [getter_name(function) for function in table.functions if function.name in FIELDS and not function.same_as]
    lines = [f"; {notice()}", "LIBRARY velmarkit", "EXPORTS", "", "; The calls of VelmarAPI", *calls, "",
             "; What its setters set", *getters, "", "; The kit's own", *own]
    return "\n".join(lines) + "\n"
