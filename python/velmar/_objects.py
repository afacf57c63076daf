"""What scenes, nodes and renderers have in common: a handle, and who owns it."""
from __future__ import annotations

import weakref
from typing import Any, Callable, Generic, List, Optional, TypeVar, Union, overload

from ._library import library
from .errors import ClosedError, OwnershipError

T = TypeVar("T")


class Object:
    """An object of the library.

    It belongs to whoever made it until a holder, a scene or a model, takes it; then it goes with its last holder.
    """

    #: The function that ends an object that has no holder.
    _delete = ""

    def __init__(self, handle: Any) -> None:
        self._library = library()
        self._handle: Optional[Any] = handle
        self._holders: "List[weakref.ref[Object]]" = []

    @property
    def closed(self) -> bool:
        """Whether the object is gone."""
        if self._handle is None:
            return True
        return bool(self._holders) and all(holder.closed for holder in map(_held, self._holders))

    def close(self) -> None:
        """Ends the object, if nothing holds it. Closing what is closed does nothing.

        OwnershipError: a scene or a model holds it.
        """
        if self.closed:
            return
        if self._holders:
            raise OwnershipError(f"{self!r} goes with what holds it")
        handle, self._handle = self._handle, None
        self._end(handle)

    def _end(self, handle: Any) -> None:
        getattr(self._library, self._delete)(handle)

    def __del__(self) -> None:
        # Not there when the constructor failed.
        if getattr(self, "_handle", None) is not None and not self._holders:
            self.close()

    def __reduce__(self) -> Any:
        # A copy would end the same object once more.
        raise TypeError(f"{self!r} can't be copied")

    def __repr__(self) -> str:
        name = getattr(self, "_name", None)
        return f"<velmar.{type(self).__name__}{'' if name is None else f' {name!r}'}>"

    def _pointer(self) -> Any:
        if self.closed:
            raise ClosedError(f"{self!r} is gone: it was closed, or went with what held it")
        return self._handle

    def _call(self, function: str, *arguments: Any) -> Any:
        """A function of the library with the handle before the arguments."""
        pointer = self._pointer()
        return getattr(self._library, function)(pointer, *arguments)

    def _held_by(self, holder: "Object") -> None:
        self._holders.append(weakref.ref(holder))

    def _released_by(self, holder: "Object") -> None:
        self._holders = [reference for reference in self._holders if reference() not in (holder, None)]
        if not self._holders:
            # The library ended it with its last holder.
            self._handle = None


class _Gone:
    closed = True


def _held(reference: "weakref.ref[Object]") -> Union[Object, _Gone]:
    return reference() or _Gone()


class Setting(Generic[T]):
    """An attribute that the library is told of. It has no way to ask, so the value is remembered here."""

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
