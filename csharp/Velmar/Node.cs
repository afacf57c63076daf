using System;
using System.Runtime.InteropServices;
using System.Text;

namespace Velmar
{
    /// <summary>Three numbers.</summary>
    public struct Vec3
    {
        /// <summary>The first.</summary>
        public double X;
        /// <summary>The second.</summary>
        public double Y;
        /// <summary>The third.</summary>
        public double Z;

        /// <summary>Three numbers.</summary>
        public Vec3(double x, double y, double z) { X = x; Y = y; Z = z; }

        /// <inheritdoc/>
        public override string ToString() { return "(" + X + ", " + Y + ", " + Z + ")"; }
    }

    /// <summary>Holds a node of the library.</summary>
    public sealed class NodeHandle : SafeHandle
    {
        /// <summary>Holds a node that is new, or that another object holds too.</summary>
        internal unsafe NodeHandle(IntPtr node) : base(IntPtr.Zero, true)
        {
            Node.Check(Native.VelmarKit_Node_Retain((void*)node));
            SetHandle(node);
        }

        /// <inheritdoc/>
        public override bool IsInvalid { get { return handle == IntPtr.Zero; } }

        /// <inheritdoc/>
        protected override unsafe bool ReleaseHandle() { return Native.VelmarKit_Node_Release((void*)handle) == 0; }
    }

    /// <summary>A scene, or a node that may be part of one. It is destroyed when no scene, model, renderer or object of C#
    /// holds it any more. After Dispose, its members throw ObjectDisposedException.</summary>
    public abstract unsafe class Node : IDisposable
    {
        internal Node(IntPtr created) { Handle = new NodeHandle(created); }

        internal NodeHandle Handle { get; }

        /// <summary>The name.</summary>
        public string Name
        {
            get { byte* text; ulong size; Check(Native.VelmarKit_Node_GetName(Handle, &text, &size)); return TextOf(text, size); }
        }

        /// <summary>Releases the node.</summary>
        public void Dispose() { Handle.Dispose(); }

        internal static void Check(int status)
        {
            if (status != 0) throw VelmarException.Of(status);
        }

        /// <summary>Text for the library: UTF-8 with a zero byte at its end.</summary>
        internal static byte[] Utf8(string text)
        {
            if (text == null) throw new ArgumentNullException(nameof(text));
            if (text.IndexOf('\0') >= 0) throw new ArgumentException("a text contains a zero character");
            byte[] bytes = new byte[Encoding.UTF8.GetByteCount(text) + 1];
            // Unpaired surrogates become characters that the library would take.
            new UTF8Encoding(false, true).GetBytes(text, 0, text.Length, bytes, 0);
            return bytes;
        }

        internal static string TextOf(byte* text, ulong size)
        {
            return size == 0 ? "" : Encoding.UTF8.GetString(text, checked((int)size));
        }

        internal static string TextOf(byte* text)
        {
            ulong size = 0;
            while (text[size] != 0) ++size;
            return TextOf(text, size);
        }

        /// <summary>The number of rows of an array, for the library.</summary>
        internal static int RowsOf(int numbers, int columns, string what)
        {
            if (numbers % columns != 0)
                throw new ArgumentException(what + " must have a multiple of " + columns + " numbers, not " + numbers);
            return numbers / columns;
        }
    }
}
