"""What scenes, nodes and renderers have in common: a handle, and its owners."""
from __future__ import annotations

import weakref
from typing import Any, Callable, Generic, List, Optional, TypeVar, Union, overload

from ._library import library
from .errors import ClosedError, OwnershipError

T = TypeVar("T")


class Object:
    """An object of the library.

    Its creator owns it until it is passed to other owners, scenes or models. It is destroyed with its last owner.
    """

    #: The function that destroys an object without an owner.
    _delete = ""
    #: The function that adds the object to a scene.
    _add = ""

    def __init__(self, handle: Any) -> None:
        self._library = library()
        self._handle: Optional[Any] = handle
        self._owners: "List[weakref.ref[Object]]" = []

    @property
    def closed(self) -> bool:
        """Whether the object was destroyed."""
        if self._handle is None:
            return True
        return bool(self._owners) and all(owner.closed for owner in map(_owner, self._owners))

    def close(self) -> None:
        """Destroys the object. Does nothing if it is closed already.

        OwnershipError: a scene or a model owns it.
        """
        if self.closed:
            return
        if self._owners:
            raise OwnershipError(f"{self!r} is destroyed with its owner")
        handle, self._handle = self._handle, None
        self._end(handle)

    def _end(self, handle: Any) -> None:
        getattr(self._library, self._delete)(handle)

    def __del__(self) -> None:
        # Missing if the constructor failed.
        if getattr(self, "_handle", None) is not None and not self._owners:
            self.close()

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
            # The library destroyed it with its last owner.
            self._handle = None


class _Destroyed:
    closed = True


def _owner(reference: "weakref.ref[Object]") -> Union[Object, _Destroyed]:
    return reference() or _Destroyed()


class Setting(Generic[T]):
    """An attribute that is set in the library. The library has no getters, so the value is kept here."""

    def __init__(self, function: str, check: Callable[[str, Any], T], default: Any, doc: str) -> None:
        self.function = function
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
        return self if instance is None else instance.__dict__.get(self.name, self.default)

    def __set__(self, instance: Object, value: Any) -> None:
        checked = self.check(self.name, value)
        arguments = checked if isinstance(checked, tuple) else (checked,)
        instance._call(self.function, *arguments)
        instance.__dict__[self.name] = value if isinstance(checked, bytes) else checked


def assign(instance: Object, settings: Any) -> None:
    """Sets the attributes that aren't None."""
    for name, value in settings.items():
        if value is not None:
            setattr(instance, name, value)
