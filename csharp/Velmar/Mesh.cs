using System;
using System.Runtime.InteropServices;

namespace Velmar
{
    /// <summary>A mesh: vertices, faces, texture coordinates and normals under a name. It is filled in any order, with
    /// Build at the end.</summary>
    public sealed unsafe class Mesh : MeshNode
    {
        /// <summary>An empty mesh.</summary>
        public Mesh(string name) : base(Create(name)) { }

        internal Mesh(IntPtr node) : base(node) { }

        /// <summary>Loads an obj, ply, stl or vmmesh file. The mesh is named after it. The scale multiplies the positions,
        /// except those of vmmesh files.</summary>
        public static Mesh Load(string path, float scale = 1)
        {
            IntPtr mesh;
            fixed (byte* text = Utf8(path)) Check(Native.VelmarKit_Mesh_LoadFile(text, scale, &mesh));
            return new Mesh(mesh);
        }

        /// <summary>Appends vertices: x, y, z of each, in metres.</summary>
        public void AddVertices(ReadOnlySpan<float> xyz)
        {
            int count = RowsOf(xyz.Length, 3, nameof(xyz));
            fixed (float* numbers = &MemoryMarshal.GetReference(xyz))
                Check(Native.VelmarKit_Mesh_AddVertices(Handle, count, numbers));
        }

        /// <summary>Appends triangles: three indices of vertices for each, and the index of their material. Without indices
        /// of texture coordinates, a mesh that has some has one entry for each vertex; they are set before the faces
        /// then.</summary>
        public void AddTriangles(ReadOnlySpan<uint> vertices, uint material = 0,
                                 ReadOnlySpan<uint> textureCoordinates = default(ReadOnlySpan<uint>))
        {
            AddPolygons(3, vertices, material, textureCoordinates);
        }

        /// <summary>Appends quads; as AddTriangles with four indices for each.</summary>
        public void AddQuads(ReadOnlySpan<uint> vertices, uint material = 0,
                             ReadOnlySpan<uint> textureCoordinates = default(ReadOnlySpan<uint>))
        {
            AddPolygons(4, vertices, material, textureCoordinates);
        }

        private void AddPolygons(int corners, ReadOnlySpan<uint> vertices, uint material, ReadOnlySpan<uint> pairs)
        {
            int count = RowsOf(vertices.Length, corners, nameof(vertices));
            if (pairs.Length == 0 && Counts.UvSets > 0) pairs = vertices;
            if (pairs.Length != 0 && pairs.Length != vertices.Length)
                throw new ArgumentException("there must be as many indices of texture coordinates as of vertices");
            int size = 2 + 2 * corners;
            uint[] words = new uint[checked(count * size)];
            for (int face = 0; face < count; ++face)
            {
                words[face * size] = (uint)(corners - 3);
                for (int i = 0; i < corners; ++i)
                {
                    words[face * size + 1 + i] = vertices[face * corners + i];
                    if (pairs.Length != 0) words[face * size + 1 + corners + i] = pairs[face * corners + i];
                }
                words[face * size + size - 1] = material;
            }
            fixed (uint* first = words) Check(Native.VelmarKit_Mesh_AddFaces(Handle, count, first));
        }

        /// <summary>Replaces the texture coordinates by sets of one size: u, v of each entry.</summary>
        public void SetTextureCoordinates(params float[][] sets)
        {
            int size = sets.Length == 0 ? 0 : sets[0].Length;
            foreach (float[] set in sets)
                if (set.Length != size) throw new ArgumentException("sets of texture coordinates differ in size");
            GCHandle[] pinned = new GCHandle[sets.Length];
            try
            {
                float*[] addresses = new float*[sets.Length];
                for (int i = 0; i < sets.Length; ++i)
                {
                    pinned[i] = GCHandle.Alloc(sets[i], GCHandleType.Pinned);
                    addresses[i] = (float*)pinned[i].AddrOfPinnedObject();
                }
                fixed (float** first = addresses)
                    Check(Native.VelmarKit_Mesh_SetTextureCoordinates(Handle, sets.Length, RowsOf(size, 2, "a set"), first));
            }
            finally
            {
                foreach (GCHandle each in pinned)
                    if (each.IsAllocated) each.Free();
            }
        }

        /// <summary>Replaces the normals: x, y, z for each vertex; none removes them.</summary>
        public void SetNormals(ReadOnlySpan<float> xyz)
        {
            int count = RowsOf(xyz.Length, 3, nameof(xyz));
            fixed (float* numbers = &MemoryMarshal.GetReference(xyz))
                Check(Native.VelmarKit_Mesh_SetNormals(Handle, count, numbers));
        }

        /// <summary>Appends the name of a material, unless the mesh has it. The first is that of material 0.</summary>
        public void AddMaterialName(string name)
        {
            fixed (byte* text = Utf8(name)) Check(Native.VelmarKit_Mesh_AddMaterialUsed(Handle, text));
        }

        /// <summary>Finishes a filled mesh. Returns how many materials it uses.</summary>
        public uint Build()
        {
            uint materials;
            Check(Native.VelmarKit_Mesh_Build(Handle, &materials));
            return materials;
        }

        /// <summary>The number of elements.</summary>
        public MeshCounts Counts
        {
            get { MeshCounts counts; Check(Native.VelmarKit_Mesh_GetCounts(Handle, &counts)); return counts; }
        }

        /// <summary>x, y, z of each vertex: the mesh's own memory, valid until the mesh is changed or disposed of.</summary>
        public ReadOnlySpan<float> Vertices
        {
            get { float* first; ulong n; Check(Native.VelmarKit_Mesh_GetVertices(Handle, &first, &n)); return View(first, n, 3); }
        }

        /// <summary>x, y, z of the normal of each vertex, or none; as Vertices.</summary>
        public ReadOnlySpan<float> Normals
        {
            get { float* first; ulong n; Check(Native.VelmarKit_Mesh_GetNormals(Handle, &first, &n)); return View(first, n, 3); }
        }

        /// <summary>u, v of each pair; entry i of set s is pair i * sets + s. As Vertices.</summary>
        public ReadOnlySpan<float> TextureCoordinates
        {
            get
            {
                float* first;
                ulong n;
                Check(Native.VelmarKit_Mesh_GetTextureCoordinates(Handle, &first, &n));
                return View(first, n, 2);
            }
        }

        /// <summary>7 numbers of each triangle: three vertices, three texture coordinates, the material. As Vertices.</summary>
        public ReadOnlySpan<uint> Triangles
        {
            get { uint* first; ulong n; Check(Native.VelmarKit_Mesh_GetTriangles(Handle, &first, &n)); return View(first, n, 7); }
        }

        /// <summary>9 numbers of each quad: four vertices, four texture coordinates, the material. As Vertices.</summary>
        public ReadOnlySpan<uint> Quads
        {
            get { uint* first; ulong n; Check(Native.VelmarKit_Mesh_GetQuads(Handle, &first, &n)); return View(first, n, 9); }
        }

        private static ReadOnlySpan<float> View(float* first, ulong rows, int columns)
        {
            return new ReadOnlySpan<float>(first, checked((int)rows * columns));
        }

        private static ReadOnlySpan<uint> View(uint* first, ulong rows, int columns)
        {
            return new ReadOnlySpan<uint>(first, checked((int)rows * columns));
        }

        /// <summary>Writes a vmmesh file. After a failure, a file that was there is as before.</summary>
        public void Write(string path)
        {
            fixed (byte* text = Utf8(path)) Check(Native.VelmarKit_Mesh_WriteToFile(Handle, text));
        }

        private static IntPtr Create(string name)
        {
            IntPtr node;
            fixed (byte* text = Utf8(name)) Check(Native.VelmarKit_Mesh_Create(text, &node));
            return node;
        }
    }
}
