"""The nodes of a scene other than meshes."""
from __future__ import annotations

import ctypes
import enum
import math
from typing import Any, Container, Optional, Sequence, Tuple

from . import _functions
from ._library import library
from ._objects import Object, Setting, assign
from ._values import Vector, flag, int32, number, text, vector
from .mesh import Mesh


class _Undeletable(Object):
    """A node that the library has no function to delete: a scene of its own takes it along."""

    _add = ""

    def _end(self, handle: Any) -> None:
        scene = self._library.VelmarScene_Create()
        getattr(self._library, self._add)(scene, handle)
        self._library.VelmarScene_Delete(scene)


class Camera(_Undeletable):
    """A thin lens in front of a sensor. Lengths are metres."""

    _add = "VelmarScene_AddCamera"

    position = Setting("VelmarCamera_SetPosition", vector, None, "The position; unset at first.")
    forwards = Setting("VelmarCamera_SetForwards", vector, (0.0, 1.0, 0.0), "The viewing direction, of any length.")
    up = Setting("VelmarCamera_SetUp", vector, (0.0, 0.0, 1.0), "The direction that is up in the image.")
    lens_radius = Setting("VelmarCamera_SetLensRadius", number, 0.001, "The radius of the aperture.")
    autofocus = Setting("VelmarCamera_SetAutofocus", flag, True, "Whether the camera focuses itself.")
    focus_distance = Setting("VelmarCamera_SetFocusDistance", number, 20.0, "The distance of what is in focus.")
    exposure_duration = Setting("VelmarCamera_SetExposureDuration", number, 0.333, "The exposure time, in seconds.")
    sensor_width = Setting("VelmarCamera_SetSensorWidth", number, 0.036, "The width of the sensor.")
    lens_sensor_distance = Setting("VelmarCamera_SetLensSensorDistance", number, 0.036,
                                   "The distance from lens to sensor, which with the sensor's width gives the field of "
                                   "view.")
    lens_shift_right = Setting("VelmarCamera_SetLensShiftRightDistance", number, 0.0,
                               "How far the lens is shifted to the right.")
    lens_shift_up = Setting("VelmarCamera_SetLensShiftUpDistance", number, 0.0, "How far the lens is shifted upwards.")

    def __init__(self, *, position: Optional[Vector] = None, forwards: Optional[Vector] = None,
                 up: Optional[Vector] = None, lens_radius: Optional[float] = None, autofocus: Optional[bool] = None,
                 focus_distance: Optional[float] = None, exposure_duration: Optional[float] = None,
                 sensor_width: Optional[float] = None, lens_sensor_distance: Optional[float] = None,
                 lens_shift_right: Optional[float] = None, lens_shift_up: Optional[float] = None) -> None:
        settings = {name: value for name, value in locals().items() if name not in ("self", "__class__")}
        super().__init__(library().VelmarCamera_Create())
        assign(self, settings)

    @property
    def field_of_view(self) -> float:
        """The horizontal field of view, in radians. Setting it keeps the sensor and moves the lens."""
        return 2 * math.atan2(0.5 * self.sensor_width, self.lens_sensor_distance)

    @field_of_view.setter
    def field_of_view(self, value: float) -> None:
        angle = number("field_of_view", value)
        if not 0 < angle < math.pi:
            raise ValueError(f"field_of_view must be between 0 and pi, not {angle}")
        self.lens_sensor_distance = 0.5 * self.sensor_width / math.tan(0.5 * angle)

    def look_at(self, target: Vector) -> None:
        """Turns the camera from its position towards a point, and focuses there."""
        if self.position is None:
            raise ValueError("the camera has no position yet")
        towards = tuple(there - here for there, here in zip(vector("target", target), self.position))
        distance = math.sqrt(sum(component * component for component in towards))
        if distance == 0:
            raise ValueError("the camera stands at the target")
        self.forwards = towards
        self.focus_distance = distance


class Background(_Undeletable):
    """The light from around the scene. Made by `Background.uniform` or `Background.sun_sky`."""

    _add = "VelmarScene_AddBackground"

    @classmethod
    def uniform(cls, colour: Vector = (1.0, 1.0, 1.0), strength: float = 1.0) -> "Background":
        """Even light from all directions, of a colour with gamma 2.2."""
        return cls(library().VelmarBackground_CreateUniform(*vector("colour", colour), number("strength", strength)))

    @classmethod
    def sun_sky(cls, direction: Vector, model: str = "captured-simulation") -> "Background":
        """Sun and sky. The direction towards the sun has z up and is used as it stands: give it a length of 1."""
        towards, encoded = vector("direction", direction), text("model", model)
        return cls(library().VelmarBackground_CreateSunSky(*towards, encoded))


class Material(Object):
    """A diffuse material: its colour is the reflected part of red, green and blue, 0 to 1, with gamma 2.2."""

    _delete = "VelmarMaterial_Delete"

    def __init__(self, name: str, colour: Vector = (0.8, 0.8, 0.8)) -> None:
        encoded, components = text("name", name), vector("colour", colour)
        super().__init__(library().VelmarMaterial_CreateNode(encoded))
        self._name = name
        self._colour = components
        self._give(encoded)

    def _give(self, encoded: bytes) -> None:
        self._call("VelmarMaterial_AddToNode", self._library.VelmarMaterial_CreateDiffuse(encoded, *self._colour))

    @property
    def name(self) -> str:
        """The name."""
        return self._name

    @property
    def colour(self) -> Tuple[float, float, float]:
        """The colour."""
        return self._colour

    @colour.setter
    def colour(self, value: Vector) -> None:
        self._pointer()
        self._colour = vector("colour", value)
        self._give(text("name", self._name))


class Model(Object):
    """A mesh in its place, with its materials. Mesh and materials are to be added to the scene too."""

    _delete = "VelmarModel_Delete"

    def __init__(self, name: str, mesh: Mesh, materials: Sequence[Material] = (), *,
                 position: Optional[Vector] = None, rotation: Any = None) -> None:
        if not isinstance(mesh, Mesh):
            raise TypeError(f"mesh must be a Mesh, not {type(mesh).__name__}")
        # All checks come first: a model that goes takes the mesh along.
        encoded, given = text("name", name), _checked_materials(mesh, materials)
        placement = _placement(position, rotation)
        super().__init__(library().VelmarModel_Create(encoded, mesh._pointer()))
        mesh._held_by(self)
        self._name = name
        self._mesh = mesh
        self._materials: Tuple[Material, ...] = ()
        if given:
            self.materials = given
        self._call("VelmarModel_SetTransformation", *placement, 0)

    @property
    def name(self) -> str:
        """The name."""
        return self._name

    @property
    def mesh(self) -> Mesh:
        """The mesh that the model shows."""
        return self._mesh

    @property
    def materials(self) -> Tuple[Material, ...]:
        """The materials: the n-th serves the faces of material index n. The library prints their number."""
        return self._materials

    @materials.setter
    def materials(self, value: Sequence[Material]) -> None:
        given = _checked_materials(self._mesh, value)
        handles = (_functions.VelmarMaterialNode * len(given))(*(material._pointer() for material in given))
        self._call("VelmarModel_SetMaterials", len(given), handles)
        former, self._materials = self._materials, given
        for material in set(given) - set(former):
            material._held_by(self)
        for material in set(former) - set(given):
            material._released_by(self)

    def place(self, position: Vector, rotation: Any = None) -> None:
        """Puts the model at a position, turned by a matrix of three rows, or not turned."""
        self._call("VelmarModel_SetTransformation", *_placement(position, rotation), 0)

    def _check(self, nodes: Container[int]) -> None:
        """Whether a document can be written of the model in a scene of the nodes with these ids."""
        for held in (self._mesh, *self._materials):
            if id(held) not in nodes:
                raise ValueError(f"{self!r} shows {held!r}, which must be added to the scene too")
        _checked_materials(self._mesh, self._materials)


def _checked_materials(mesh: Mesh, materials: Sequence[Material]) -> Tuple[Material, ...]:
    given = tuple(materials)
    for material in given:
        if not isinstance(material, Material):
            raise TypeError(f"materials must be of the class Material, not {type(material).__name__}")
        material._pointer()
    if given and len(given) < mesh.num_materials:
        raise ValueError(f"the faces of {mesh!r} use {mesh.num_materials} materials, and {len(given)} were given")
    return given


def _placement(position: Optional[Vector], rotation: Any) -> Tuple[Any, Any]:
    rows = ((1, 0, 0), (0, 1, 0), (0, 0, 1)) if rotation is None else tuple(rotation)
    if len(rows) != 3:
        raise ValueError(f"rotation must have three rows, not {len(rows)}")
    numbers = [component for row in rows for component in vector("rotation", row)]
    place = (0.0, 0.0, 0.0) if position is None else vector("position", position)
    return (ctypes.c_float * 9)(*numbers), (ctypes.c_float * 3)(*place)


class TonemappingKind(enum.IntEnum):
    """How linear light becomes an image."""

    LINEAR = _functions.VELMAR_TONEMAPPING_LINEAR
    REINHARD = _functions.VELMAR_TONEMAPPING_REINHARD
    CAMERA = _functions.VELMAR_TONEMAPPING_CAMERA
    FILMIC = _functions.VELMAR_TONEMAPPING_FILMIC


def _kind(what: str, value: Any) -> TonemappingKind:
    return TonemappingKind(value)


class Tonemapping(Object):
    """How linear light becomes an image. Only the settings of the kind in force reach the document."""

    _delete = "VelmarTonemapping_Delete"

    kind = Setting("VelmarTonemapping_SetType", _kind, TonemappingKind.LINEAR, "The kind in force.")
    scale = Setting("VelmarTonemapping_SetScale", number, 1.0, "The factor of the linear and filmic kinds.")
    pre_scale = Setting("VelmarTonemapping_SetPreScale", number, 4.0, "The factor before the curve of Reinhard's kind.")
    post_scale = Setting("VelmarTonemapping_SetPostScale", number, 1.0,
                         "The factor after the curve of Reinhard's kind.")
    burn = Setting("VelmarTonemapping_SetBurn", number, 6.0, "From where on Reinhard's kind burns out to white.")
    iso = Setting("VelmarTonemapping_SetIso", number, 200.0, "The film speed of the camera kind.")
    ev_adjust = Setting("VelmarTonemapping_EvAdjust", number, 0.0,
                        "The exposure adjustment of the camera kind, in EV.")
    response_function_path = Setting("VelmarTonemapping_SetResponseFunctionPath", text, None,
                                     "The file of the camera kind's response function, written as given.")

    def __init__(self, kind: TonemappingKind = TonemappingKind.LINEAR, *, scale: Optional[float] = None,
                 pre_scale: Optional[float] = None, post_scale: Optional[float] = None, burn: Optional[float] = None,
                 iso: Optional[float] = None, ev_adjust: Optional[float] = None,
                 response_function_path: Optional[str] = None) -> None:
        settings = {name: value for name, value in locals().items() if name not in ("self", "__class__")}
        super().__init__(library().VelmarTonemapping_Create())
        assign(self, settings)


class RenderSettings(Object):
    """What and how long to render. What isn't set is left to the renderer's own defaults."""

    _delete = "VelmarRenderSettings_Delete"

    width = Setting("VelmarRenderSettings_Width", int32, None, "The width of the image, in pixels.")
    height = Setting("VelmarRenderSettings_Height", int32, None, "The height of the image, in pixels.")
    super_sample_factor = Setting("VelmarRenderSettings_SuperSampleFactor", int32, None,
                                  "How many samples a pixel has along each axis.")
    halt_time = Setting("VelmarRenderSettings_HaltTime", number, None, "After how many seconds the render halts.")
    halt_samples_per_pixel = Setting("VelmarRenderSettings_HaltSamplesPerPixel", number, None,
                                     "After how many samples per pixel the render halts.")
    image_save_period = Setting("VelmarRenderSettings_ImageSavePeriod", number, None,
                                "How often the image is saved while it renders, in seconds.")
    metropolis = Setting("VelmarRenderSettings_Metropolis", flag, None, "Whether to use Metropolis light transport.")
    bidirectional = Setting("VelmarRenderSettings_Bidirectional", flag, None,
                            "Whether paths are traced from the lights too.")
    dithering = Setting("VelmarRenderSettings_Dithering", flag, None, "Whether the image is dithered.")
    vignetting = Setting("VelmarRenderSettings_Vignetting", flag, None, "Whether the image darkens towards its edges.")
    shadow_pass = Setting("VelmarRenderSettings_ShadowPass", flag, None, "Whether a shadow pass is rendered.")
    render_foreground_alpha = Setting("VelmarRenderSettings_RenderForegroundAlpha", flag, None,
                                      "Whether the alpha of the foreground is rendered.")
    info_overlay = Setting("VelmarRenderSettings_InfoOverlay", flag, None,
                           "Whether information about the render is laid over the image.")
    depth_pass = Setting("VelmarRenderSettings_DepthPass", flag, None, "Whether a depth channel is rendered.")
    material_id_tracer = Setting("VelmarRenderSettings_MaterialIdTracer", flag, None,
                                 "Whether a channel of material IDs is rendered.")

    def __init__(self, width: Optional[int] = None, height: Optional[int] = None, *,
                 super_sample_factor: Optional[int] = None, halt_time: Optional[float] = None,
                 halt_samples_per_pixel: Optional[float] = None, image_save_period: Optional[float] = None,
                 metropolis: Optional[bool] = None, bidirectional: Optional[bool] = None,
                 dithering: Optional[bool] = None, vignetting: Optional[bool] = None,
                 shadow_pass: Optional[bool] = None, render_foreground_alpha: Optional[bool] = None,
                 info_overlay: Optional[bool] = None, depth_pass: Optional[bool] = None,
                 material_id_tracer: Optional[bool] = None) -> None:
        settings = {name: value for name, value in locals().items() if name not in ("self", "__class__")}
        super().__init__(library().VelmarRenderSettings_Create())
        assign(self, settings)
