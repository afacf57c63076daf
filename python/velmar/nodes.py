"""The nodes of a scene other than meshes."""
from __future__ import annotations

import ctypes
import math
from typing import Any, Container, Dict, List, Optional, Sequence, Tuple

from . import _functions
from ._bases import BackgroundBase, CameraBase, MaterialBase, ModelBase, RenderSettingsBase, TonemappingBase
from ._objects import Object, Setting, created, read, read_handle
from ._values import Vector, number, text, vector
from .errors import BadArgumentError, VelmarError
from .mesh import Mesh


class Camera(CameraBase):
    """A thin lens in front of a sensor. Lengths are in metres."""

    @property
    def field_of_view(self) -> float:
        """The horizontal field of view, in radians. Setting it keeps the sensor and moves the lens."""
        return float(read(self, "VelmarKit_Camera_GetFieldOfView")[0])

    @field_of_view.setter
    def field_of_view(self, value: float) -> None:
        angle = number("field_of_view", value)
        if not 0 < angle < math.pi:
            raise ValueError(f"field_of_view must be between 0 and pi, not {angle}")
        self._call("VelmarKit_Camera_SetFieldOfView", angle)

    def look_at(self, target: Vector, up: Vector = (0.0, 0.0, 1.0), *, fov: Optional[float] = None) -> None:
        """Turns the camera from its position towards a point, with `up` upwards in the image, and focuses there. A field
        of view, in radians, is set too."""
        point = vector("target", target)
        here = self.position
        if here is None:
            raise ValueError("the camera has no position yet")
        distance = math.dist(point, here)
        if distance == 0:
            raise ValueError("the camera is at the target")
        self._call("VelmarKit_Camera_LookAt", *point, *vector("up", up))
        self.focus_distance = distance
        if fov is not None:
            self.field_of_view = fov

    @classmethod
    def _of_document(cls, handle: Any) -> "Camera":
        """A camera that came from a document, with its position."""
        camera = cls._of(handle)
        camera.__dict__["position"] = True
        return camera


class Background(BackgroundBase):
    """The light from around the scene. Made by `Background.uniform` or `Background.sun_sky`."""

    def __init__(self, *_: Any, **__: Any) -> None:
        raise TypeError("a Background is made by Background.uniform or Background.sun_sky")

    @classmethod
    def uniform(cls, colour: Vector = (1.0, 1.0, 1.0), strength: float = 1.0) -> "Background":
        """Even light from all directions, of a colour with gamma 2.2."""
        return cls._of(created(cls._type, "VelmarKit_Background_CreateUniform", *vector("colour", colour),
                               number("strength", strength)))

    @classmethod
    def sun_sky(cls, direction: Vector, model: str = "captured-simulation") -> "Background":
        """Sun and sky. The direction towards the sun has z up and length 1; it isn't normalised."""
        towards, encoded = vector("direction", direction), text("model", model)
        return cls._of(created(cls._type, "VelmarKit_Background_CreateSunSky", *towards, encoded))

    @property
    def colour(self) -> Optional[Tuple[float, float, float]]:
        """The colour of uniform light; None for sun and sky."""
        r, g, b, _ = self._read("VelmarKit_Background_GetUniform", 4)
        return None if r is None else (r, g, b)

    @property
    def strength(self) -> Optional[float]:
        """The strength of uniform light; None for sun and sky."""
        strength: Optional[float] = self._read("VelmarKit_Background_GetUniform", 4)[3]
        return strength

    @property
    def direction(self) -> Optional[Tuple[float, float, float]]:
        """The direction towards the sun; None for uniform light."""
        x, y, z = self._read("VelmarKit_Background_GetSunSky", 3, None, None)
        return None if x is None else (x, y, z)

    @property
    def model(self) -> Optional[str]:
        """The name of the sky's model; None for uniform light."""
        address, size = ctypes.c_void_p(), ctypes.c_uint64()
        if self._read("VelmarKit_Background_GetSunSky", 3, ctypes.byref(address), ctypes.byref(size))[0] is None:
            return None
        return (ctypes.string_at(address, size.value) if size.value else b"").decode("utf-8", "replace")

    def _read(self, getter: str, count: int, *after: Any) -> List[Any]:
        """The numbers that a getter stores; None for each if the background is of another kind."""
        numbers = [ctypes.c_double() for _ in range(count)]
        try:
            self._call(getter, *map(ctypes.byref, numbers), *after)
        except BadArgumentError:
            return [None] * count
        return [number.value for number in numbers]


class Material(MaterialBase):
    """A diffuse material: its colour is the reflected part of red, green and blue, 0 to 1, with gamma 2.2."""

    def __init__(self, name: str, colour: Vector = (0.8, 0.8, 0.8)) -> None:
        encoded, components = text("name", name), vector("colour", colour)
        super().__init__(created(self._type, "VelmarKit_Material_CreateNode", encoded))
        self._name = name
        self._give(encoded, components)

    @classmethod
    def _of_document(cls, handle: Any) -> "Material":
        """A material that came from a file."""
        material = cls._of(handle)
        material._name = read(material, "VelmarKit_Node_GetName")[0]
        return material

    def _give(self, encoded: bytes, colour: Tuple[float, float, float]) -> None:
        material = created(_functions.VelmarMaterial, "VelmarKit_Material_CreateDiffuse", encoded, *colour)
        try:
            self._call("VelmarKit_Material_AddToNode", material)
        except VelmarError:
            self._library.VelmarKit_Material_Delete(material)
            raise

    @property
    def name(self) -> str:
        """The name."""
        return self._name

    @property
    def colour(self) -> Tuple[float, float, float]:
        """The colour."""
        r, g, b = read(self, "VelmarKit_Material_GetColour")
        return r, g, b

    @colour.setter
    def colour(self, value: Vector) -> None:
        self._pointer()
        self._give(text("name", self._name), vector("colour", value))


class Model(ModelBase):
    """A mesh at a position, with its materials. Add mesh and materials to the scene too."""

    def __init__(self, name: str, mesh: Mesh, materials: Sequence[Material] = (), *,
                 position: Optional[Vector] = None, rotation: Any = None) -> None:
        if not isinstance(mesh, Mesh):
            raise TypeError(f"mesh must be a Mesh, not {type(mesh).__name__}")
        # All checks come first: destroying a model destroys a mesh without other owners.
        encoded, given = text("name", name), _checked_materials(mesh, materials)
        placement = _placement(position, rotation)
        super().__init__(created(self._type, "VelmarKit_Model_Create", encoded, mesh._pointer()))
        mesh._owned_by(self)
        self._name = name
        self._mesh = mesh
        self._materials: Tuple[Material, ...] = ()
        if given:
            self.materials = given
        self._call("VelmarKit_Model_SetTransformation", *placement, 0)

    @classmethod
    def _of_document(cls, handle: Any, known: Dict[int, Object]) -> "Model":
        """A model of a scene that was read, of whose nodes `known` has the objects by their handles. What the document
        doesn't have is None, or a node outside of the scene."""
        model = cls._of(handle)
        model._name = read(model, "VelmarKit_Node_GetName")[0]
        mesh = read_handle(model, _functions.VelmarMesh, "VelmarKit_Model_GetGeometry", None)
        model._mesh = known.get(mesh.value or 0)  # type: ignore[assignment]
        count = ctypes.c_uint64()
        model._call("VelmarKit_Model_GetGeometry", None, ctypes.byref(count))
        materials = []
        for i in range(count.value):
            node = read_handle(model, _functions.VelmarMaterialNode, "VelmarKit_Model_GetMaterial", before=(i,))
            if node.value and node.value not in known:
                known[node.value] = Material._of_document(node)
            materials.append(known.get(node.value or 0))
        model._materials = tuple(materials)  # type: ignore[arg-type]
        for held in {model._mesh, *model._materials} - {None}:
            held._owned_by(model)
        return model

    @classmethod
    def _of_library(cls, handle: Any, owner: Object) -> "Model":
        """A model that the library made, with its mesh and materials, which `owner` owns."""
        model = cls._of(handle)
        mesh = Mesh._of_library(read_handle(model, _functions.VelmarMesh, "VelmarKit_Model_GetGeometry", None))
        count = ctypes.c_uint64()
        model._call("VelmarKit_Model_GetGeometry", None, ctypes.byref(count))
        materials = []
        for i in range(count.value):
            node = read_handle(model, _functions.VelmarMaterialNode, "VelmarKit_Model_GetMaterial", before=(i,))
            materials.append(Material._of_document(node))
        model._name = read(model, "VelmarKit_Node_GetName")[0]
        model._mesh, model._materials = mesh, tuple(materials)
        for held in (mesh, *materials):
            held._owned_by(owner)
            held._owned_by(model)
        model._owned_by(owner)
        return model

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
        """The materials: entry i is for the faces with material index i. The library prints their number."""
        return self._materials

    @materials.setter
    def materials(self, value: Sequence[Material]) -> None:
        given = _checked_materials(self._mesh, value)
        handles = (_functions.VelmarMaterialNode * len(given))(*(material._pointer() for material in given))
        self._call("VelmarKit_Model_SetMaterials", len(given), handles)
        former, self._materials = self._materials, given
        for material in set(given) - set(former):
            material._owned_by(self)
        for material in set(former) - set(given):
            material._released_by(self)

    def place(self, position: Vector, rotation: Any = None) -> None:
        """Sets the position, and the rotation as a matrix of three rows (by default none)."""
        self._call("VelmarKit_Model_SetTransformation", *_placement(position, rotation), 0)

    def _check(self, nodes: Container[int]) -> None:
        """Raises if no document can be written of the model in a scene of the nodes with these ids."""
        for held in (self._mesh, *self._materials):
            # None is what a document that was read didn't have.
            if held is not None and id(held) not in nodes:
                raise ValueError(f"{self!r} uses {held!r}, which must be added to the scene too")
        if None not in (self._mesh, *self._materials):
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


class Tonemapping(TonemappingBase):
    """How linear light becomes an image. The document contains the settings of the active kind only."""


class RenderSettings(RenderSettingsBase):
    """What is rendered, and for how long. The renderer uses its own default for each setting that is None."""

    #: The elements of settings that have another name.
    _ELEMENTS = {"depth_pass": "depth_channel", "material_id_tracer": "material_id_channel"}

    @classmethod
    def _of_document(cls, handle: Any) -> "RenderSettings":
        """Settings that came from a document, of which some are set."""
        settings = cls._of(handle)
        for name, setting in vars(RenderSettingsBase).items():
            if isinstance(setting, Setting):
                is_set = ctypes.c_bool()
                element = cls._ELEMENTS.get(name, name).encode()
                settings._call("VelmarKit_RenderSettings_IsSet", element, ctypes.byref(is_set))
                if is_set.value:
                    settings.__dict__[name] = True
        return settings
