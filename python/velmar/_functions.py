"""The library's functions, as ctypes declares them.

Made by `./dev generate` from api/functions/; make changes there.
"""
from ctypes import c_bool, c_char_p, c_double, c_float, c_int, c_int32, c_uint, c_uint32, c_uint64, c_void_p, POINTER

VERSION = "1.0.0"

VELMAR_TONEMAPPING_LINEAR = 1000
VELMAR_TONEMAPPING_REINHARD = 1001
VELMAR_TONEMAPPING_CAMERA = 1002
VELMAR_TONEMAPPING_FILMIC = 1003


class VelmarBackground(c_void_p):
    """The address of a VelmarBackground."""


class VelmarCamera(c_void_p):
    """The address of a VelmarCamera."""


class VelmarContext(c_void_p):
    """The address of a VelmarContext."""


class VelmarMaterial(c_void_p):
    """The address of a VelmarMaterial."""


class VelmarMaterialNode(c_void_p):
    """The address of a VelmarMaterialNode."""


class VelmarMesh(c_void_p):
    """The address of a VelmarMesh."""


class VelmarModel(c_void_p):
    """The address of a VelmarModel."""


class VelmarRenderSettings(c_void_p):
    """The address of a VelmarRenderSettings."""


class VelmarRenderer(c_void_p):
    """The address of a VelmarRenderer."""


class VelmarScene(c_void_p):
    """The address of a VelmarScene."""


class VelmarTonemapping(c_void_p):
    """The address of a VelmarTonemapping."""


# The result, then the arguments; further ones may follow those of a function in VARIADIC.
FUNCTIONS = {
    "VelmarBackground_CreateUniform": (VelmarBackground, c_double, c_double, c_double, c_double),
    "VelmarBackground_CreateSunSky": (VelmarBackground, c_double, c_double, c_double, c_char_p),
    "VelmarBackground_Delete": (None, c_void_p),
    "VelmarCamera_Create": (VelmarCamera,),
    "VelmarCamera_SetLensRadius": (None, VelmarCamera, c_double),
    "VelmarCamera_SetAutofocus": (None, VelmarCamera, c_bool),
    "VelmarCamera_SetExposureDuration": (None, VelmarCamera, c_double),
    "VelmarCamera_SetLensSensorDistance": (None, VelmarCamera, c_double),
    "VelmarCamera_SetLensShiftRightDistance": (None, VelmarCamera, c_double),
    "VelmarCamera_SetLensShiftUpDistance": (None, VelmarCamera, c_double),
    "VelmarCamera_SetSensorWidth": (None, VelmarCamera, c_double),
    "VelmarCamera_SetFocusDistance": (None, VelmarCamera, c_double),
    "VelmarCamera_SetForwards": (None, VelmarCamera, c_double, c_double, c_double),
    "VelmarCamera_SetUp": (None, VelmarCamera, c_double, c_double, c_double),
    "VelmarCamera_SetPosition": (None, VelmarCamera, c_double, c_double, c_double),
    "VelmarCamera_SetFov": (None, VelmarCamera, c_double, c_double),
    "VelmarCamera_SetAperature": (c_double, VelmarCamera, c_double, c_double),
    "VelmarContext_Create": (VelmarContext,),
    "VelmarContext_Initialize": (c_int, VelmarContext),
    "VelmarContext_Delete": (None, VelmarContext),
    "velmar_create_default_material": (None, VelmarScene),
    "velmar_create_sunsky": (None, VelmarScene),
    "velmar_create_dummy_lighting": (None, VelmarScene),
    "velmar_create_plane": (None, VelmarScene),
    "VelmarScene_AddGroundPlane": (None, VelmarScene, c_double, c_double),
    "velmar_write_mesh_to_file": (None, VelmarMesh, c_char_p),
    "VelmarMaterial_CreateNode": (VelmarMaterialNode, c_char_p),
    "VelmarMaterial_CreateDiffuse": (VelmarMaterial, c_char_p, c_double, c_double, c_double),
    "VelmarMaterial_AddToNode": (None, VelmarMaterialNode, VelmarMaterial),
    "VelmarMaterial_Delete": (None, c_void_p),
    "VelmarMesh_Create": (VelmarMesh, c_char_p),
    "VelmarMesh_NormalSmoothing": (None, VelmarMesh, c_bool),
    "VelmarMesh_SetNormalSmoothing": (None, VelmarMesh, c_bool),
    "VelmarMesh_ViewDependentSubdivision": (None, VelmarMesh, c_bool),
    "VelmarMesh_MaxNumSubdivisions": (None, VelmarMesh, c_uint),
    "VelmarMesh_AddVertices": (None, VelmarMesh, c_int32, POINTER(c_float)),
    "VelmarMesh_AddFaces": (None, VelmarMesh, c_int32, POINTER(c_uint32)),
    "VelmarMesh_AddTextureCoordinates": (None, VelmarMesh, c_int32, POINTER(c_float)),
    "VelmarMesh_AddMaterialUsed": (None, VelmarMesh, c_char_p),
    "VelmarMesh_Build": (c_uint32, VelmarMesh),
    "VelmarMesh_WriteToFile": (None, VelmarMesh, c_char_p),
    "VelmarMesh_Delete": (None, VelmarMesh),
    "VelmarModel_Create": (VelmarModel, c_char_p, VelmarMesh),
    "VelmarModel_SetMaterials": (None, VelmarModel, c_int32, POINTER(VelmarMaterialNode)),
    "VelmarModel_SetTransformation": (None, VelmarModel, POINTER(c_float), POINTER(c_float), c_int32),
    "VelmarModel_Delete": (None, VelmarModel),
    "VelmarRenderer_Create": (VelmarRenderer, VelmarContext),
    "VelmarRenderer_InitializeWithScene": (None, VelmarRenderer, VelmarContext, VelmarScene),
    "VelmarRenderer_Start": (c_uint64, VelmarRenderer),
    "VelmarRenderer_Pause": (c_uint64, VelmarRenderer),
    "VelmarRenderer_Resume": (c_uint64, VelmarRenderer),
    "VelmarRenderer_Stop": (c_uint64, VelmarRenderer),
    "VelmarRenderer_UpdateScene": (c_uint64, VelmarRenderer),
    "VelmarRenderer_Delete": (None, VelmarRenderer),
    "VelmarRenderSettings_Create": (VelmarRenderSettings,),
    "VelmarRenderSettings_Width": (None, VelmarRenderSettings, c_int32),
    "VelmarRenderSettings_Height": (None, VelmarRenderSettings, c_int32),
    "VelmarRenderSettings_SuperSampleFactor": (None, VelmarRenderSettings, c_int32),
    "VelmarRenderSettings_HaltTime": (None, VelmarRenderSettings, c_double),
    "VelmarRenderSettings_HaltSamplesPerPixel": (None, VelmarRenderSettings, c_double),
    "VelmarRenderSettings_ImageSavePeriod": (None, VelmarRenderSettings, c_double),
    "VelmarRenderSettings_Metropolis": (None, VelmarRenderSettings, c_bool),
    "VelmarRenderSettings_Bidirectional": (None, VelmarRenderSettings, c_bool),
    "VelmarRenderSettings_Dithering": (None, VelmarRenderSettings, c_bool),
    "VelmarRenderSettings_Vignetting": (None, VelmarRenderSettings, c_bool),
    "VelmarRenderSettings_ShadowPass": (None, VelmarRenderSettings, c_bool),
    "VelmarRenderSettings_RenderForegroundAlpha": (None, VelmarRenderSettings, c_bool),
    "VelmarRenderSettings_InfoOverlay": (None, VelmarRenderSettings, c_bool),
    "VelmarRenderSettings_DepthPass": (None, VelmarRenderSettings, c_bool),
    "VelmarRenderSettings_MaterialIdTracer": (None, VelmarRenderSettings, c_bool),
    "VelmarRenderSettings_Delete": (None, VelmarRenderSettings),
    "VelmarScene_Create": (VelmarScene,),
    "VelmarScene_AddModel": (None, VelmarScene, VelmarModel),
    "VelmarScene_AddBackground": (None, VelmarScene, VelmarBackground),
    "VelmarScene_AddCamera": (None, VelmarScene, VelmarCamera),
    "VelmarScene_AddMaterial": (None, VelmarScene, VelmarMaterialNode),
    "VelmarScene_AddMesh": (None, VelmarScene, VelmarMesh),
    "VelmarScene_AddRenderSettings": (None, VelmarScene, VelmarRenderSettings),
    "VelmarScene_AddTonemapping": (None, VelmarScene, VelmarTonemapping),
    "VelmarScene_WriteToXML": (None, VelmarScene, c_char_p),
    "VelmarScene_Delete": (None, VelmarScene),
    "VelmarTonemapping_Create": (VelmarTonemapping,),
    "VelmarTonemapping_SetType": (None, VelmarTonemapping, c_int32),
    "VelmarTonemapping_SetScale": (None, VelmarTonemapping, c_double),
    "VelmarTonemapping_SetPreScale": (None, VelmarTonemapping, c_double),
    "VelmarTonemapping_SetPostScale": (None, VelmarTonemapping, c_double),
    "VelmarTonemapping_SetBurn": (None, VelmarTonemapping, c_double),
    "VelmarTonemapping_SetIso": (None, VelmarTonemapping, c_double),
    "VelmarTonemapping_EvAdjust": (None, VelmarTonemapping, c_double),
    "VelmarTonemapping_SetResponseFunctionPath": (None, VelmarTonemapping, c_char_p),
    "VelmarTonemapping_Delete": (None, VelmarTonemapping),
}

VARIADIC = {"VelmarRenderer_UpdateScene"}
