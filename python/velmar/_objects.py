"""What scenes, nodes and renderers have in common: a handle, and its owners."""
from __future__ import annotations

import ctypes
import enum
import weakref
from typing import Any, Callable, Generic, List, Optional, Tuple, Type, TypeVar, Union, overload

from . import _functions
from ._library import library
from .errors import ClosedError, OwnershipError

T = TypeVar("T")
O = TypeVar("O", bound="Object")


class Object:
    """An object of the library.

    Its creator owns it until it is passed to other owners, scenes or models. It is destroyed with its last owner.
    """

    #: The type of the handle.
    _type: Any = None
    #: The functions that hold an object for this one, and that end that.
    _retain = "VelmarKit_Node_Retain"
    _release = "VelmarKit_Node_Release"
    #: The function that adds the object to a scene.
    _add = ""

    def __init__(self, handle: Any) -> None:
        self._library = library()
        self._handle: Optional[Any] = handle
        self._owners: "List[weakref.ref[Object]]" = []
        if self._retain:
            getattr(self._library, self._retain)(handle)

    @classmethod
    def _of(cls: Type[O], handle: Any) -> O:
        """An object of a handle that there is already."""
        made = cls.__new__(cls)
        Object.__init__(made, handle)
        return made

    def __getattribute__(self, name: str) -> Any:
        # Nothing of a destroyed object is used, not even what is known of it here.
        if name[0] != "_" and name not in ("close", "closed"):
            object.__getattribute__(self, "_pointer")()
        return object.__getattribute__(self, name)

    def __setattr__(self, name: str, value: Any) -> None:
        if name[0] != "_" and not hasattr(type(self), name):
            raise AttributeError(f"a {type(self).__name__} has no attribute {name!r}")
        object.__setattr__(self, name, value)

    @property
    def closed(self) -> bool:
        """Whether the object was destroyed."""
        # A constructor that failed leaves no handle.
        if getattr(self, "_handle", None) is None:
            return True
        return bool(self._owners) and all(owner.closed for owner in map(_owner, self._owners))

    def close(self) -> None:
        """Destroys the object. Does nothing if it is closed already.

        OwnershipError: a scene or a model owns it.
        """
        if self._owners and not self.closed:
            raise OwnershipError(f"{self!r} is destroyed with its owner")
        self._drop()

    def _drop(self) -> None:
        """Releases the object, if that wasn't done before."""
        handle, self._handle = getattr(self, "_handle", None), None
        if handle is not None:
            self._end(handle)

    def _end(self, handle: Any) -> None:
        getattr(self._library, self._release)(handle)

    def __del__(self) -> None:
        self._drop()

    def __reduce__(self) -> Any:
        # A copy would destroy the same object twice.
        raise TypeError(f"{self!r} can't be copied")

    def __repr__(self) -> str:
        name = getattr(self, "_name", None)
        return f"<velmar.{type(self).__name__}{'' if name is None else f' {name!r}'}>"

    def _pointer(self) -> Any:
        if self.closed:
            raise ClosedError(f"{self!r} was closed, or destroyed with its owner")
        return self._handle

    def _call(self, function: str, *arguments: Any) -> Any:
        """Calls a function of the library with the handle before the arguments."""
        pointer = self._pointer()
        return getattr(self._library, function)(pointer, *arguments)

    def _owned_by(self, owner: "Object") -> None:
        self._owners.append(weakref.ref(owner))

    def _released_by(self, owner: "Object") -> None:
        self._owners = [reference for reference in self._owners if reference() not in (owner, None)]
        if not self._owners:
            # It is destroyed with its last owner.
            self._drop()

    def _taken_from(self, scene: "Object") -> None:
        """The scene gave the node back."""
        self._owners = [reference for reference in self._owners if reference() not in (scene, None)]


class _Destroyed:
    closed = True


def _owner(reference: "weakref.ref[Object]") -> Union[Object, _Destroyed]:
    return reference() or _Destroyed()


def created(kind: Any, function: str, *arguments: Any) -> Any:
    """The handle of an object that a function creates."""
    handle = kind()
    getattr(library(), function)(*arguments, ctypes.byref(handle))
    return handle


class Setting(Generic[T]):
    """An attribute that is set and read in the library. What is unset there is None."""

    def __init__(self, setter: str, getter: str, check: Callable[[str, Any], T], default: Any, doc: str) -> None:
        self.setter = setter
        self.getter = getter
        self.check = check
        self.default = default
        self.__doc__ = doc

    def __set_name__(self, owner: type, name: str) -> None:
        self.name = name

    @overload
    def __get__(self, instance: None, owner: type) -> "Setting[T]": ...

    @overload
    def __get__(self, instance: Object, owner: type) -> T: ...

    def __get__(self, instance: Any, owner: type) -> Any:
        if instance is None:
            return self
        if self.default is None and self.name not in instance.__dict__:
            return None
        values = read(instance, self.getter)
        value = values if len(values) > 1 else values[0]
        return type(self.default)(value) if isinstance(self.default, enum.Enum) else value

    def __set__(self, instance: Object, value: Any) -> None:
        checked = self.check(self.name, value)
        arguments = checked if isinstance(checked, tuple) else (checked,)
        instance._call(self.setter, *arguments)
        instance.__dict__[self.name] = True


def read(instance: Object, getter: str, *arguments: Any) -> Tuple[Any, ...]:
    """What a function stores through its arguments after the handle and `arguments`."""
    declared: Any = _functions.FUNCTIONS[getter][1 + len(arguments):]
    values = [kind._type_() for kind in declared]
    instance._call(getter, *arguments, *map(ctypes.byref, values))
    if declared[0] is ctypes.POINTER(ctypes.c_void_p) and declared[-1] is ctypes.POINTER(ctypes.c_uint64):
        address, size = values
        return ((ctypes.string_at(address, size.value) if size.value else b"").decode("utf-8", "replace"),)
    return tuple(value.value for value in values)


def read_handle(instance: Object, kind: Any, getter: str, *after: Any, before: Tuple[Any, ...] = ()) -> Any:
    """A handle that a function stores between the arguments `before` and `after`."""
    handle = kind()
    instance._call(getter, *before, ctypes.byref(handle), *after)
    return handle


def assign(instance: Object, settings: Any) -> None:
    """Sets the attributes that aren't None."""
    for name, value in settings.items():
        if value is not None:
            setattr(instance, name, value)
