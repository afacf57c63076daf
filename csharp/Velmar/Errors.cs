using System;

namespace Velmar
{
    /// <summary>The base of the package's exceptions. The message is the library's whole text.</summary>
    public class VelmarException : Exception
    {
        internal VelmarException(int status, string message) : base(message) { Status = status; }

        /// <summary>The status of velmarkit.h.</summary>
        public int Status { get; }

        /// <summary>The exception of a status, with the text of this thread's last failure.</summary>
        internal static unsafe VelmarException Of(int status)
        {
            string text = Node.TextOf(Native.VelmarKit_LastError());
            switch (status)
            {
                case 1: return new VelmarArgumentException(text);
                case 2: return new VelmarOutOfMemoryException(text);
                case 3: return new VelmarFileException(text);
                case 4: return new VelmarMeshException(text);
                case 5: return new VelmarDocumentException(text);
                case 6: return new VelmarRendererException(text);
                default: return new VelmarInternalException(status, text);
            }
        }
    }

    /// <summary>An argument is out of range, or of another kind than the function takes. Nothing was changed.</summary>
    public class VelmarArgumentException : VelmarException
    {
        internal VelmarArgumentException(string message) : base(1, message) { }
    }

    /// <summary>Memory is exhausted. Every object is still alive.</summary>
    public class VelmarOutOfMemoryException : VelmarException
    {
        internal VelmarOutOfMemoryException(string message) : base(2, message) { }
    }

    /// <summary>A file or folder can't be read or written.</summary>
    public class VelmarFileException : VelmarException
    {
        internal VelmarFileException(string message) : base(3, message) { }
    }

    /// <summary>A mesh or mesh file isn't valid.</summary>
    public class VelmarMeshException : VelmarException
    {
        internal VelmarMeshException(string message) : base(4, message) { }
    }

    /// <summary>The scene can't be written as a document.</summary>
    public class VelmarDocumentException : VelmarException
    {
        internal VelmarDocumentException(string message) : base(5, message) { }
    }

    /// <summary>The renderer library is missing or failed.</summary>
    public class VelmarRendererException : VelmarException
    {
        internal VelmarRendererException(string message) : base(6, message) { }
    }

    /// <summary>A failed assertion of the library.</summary>
    public class VelmarInternalException : VelmarException
    {
        internal VelmarInternalException(int status, string message) : base(status, message) { }
    }
}
