using System;

namespace Velmar
{
    /// <summary>A thin lens in front of a sensor. Lengths are in metres.</summary>
    public sealed unsafe class Camera : CameraNode
    {
        /// <summary>A camera without a position.</summary>
        public Camera() : base(Create()) { }

        internal Camera(IntPtr node) : base(node) { }

        /// <summary>Turns the camera from its position towards a target, with z upwards in the image.</summary>
        public void LookAt(Vec3 target) { LookAt(target, new Vec3(0, 0, 1)); }

        /// <summary>Turns the camera from its position towards a target, with `up` upwards in the image.</summary>
        public void LookAt(Vec3 target, Vec3 up)
        {
            Check(Native.VelmarKit_Camera_LookAt(Handle, target.X, target.Y, target.Z, up.X, up.Y, up.Z));
        }

        /// <summary>The horizontal field of view, in radians. Setting it keeps the sensor and moves the lens.</summary>
        public double FieldOfView
        {
            get { double v; Check(Native.VelmarKit_Camera_GetFieldOfView(Handle, &v)); return v; }
            set { Check(Native.VelmarKit_Camera_SetFieldOfView(Handle, value)); }
        }

        private static IntPtr Create() { IntPtr node; Check(Native.VelmarKit_Camera_Create(&node)); return node; }
    }

    /// <summary>What is rendered, and for how long. The renderer uses its own default for what isn't set.</summary>
    public sealed unsafe class RenderSettings : RenderSettingsNode
    {
        /// <summary>Settings of which none is set.</summary>
        public RenderSettings() : base(Create()) { }

        internal RenderSettings(IntPtr node) : base(node) { }

        /// <summary>Settings for an image of this size, in pixels.</summary>
        public RenderSettings(int width, int height) : this() { Width = width; Height = height; }

        /// <summary>Whether an option is set, by the name of its element in a document, as "halt_time".</summary>
        public bool IsSet(string element)
        {
            byte value;
            fixed (byte* text = Utf8(element)) Check(Native.VelmarKit_RenderSettings_IsSet(Handle, text, &value));
            return value != 0;
        }

        private static IntPtr Create() { IntPtr node; Check(Native.VelmarKit_RenderSettings_Create(&node)); return node; }
    }

    /// <summary>How linear light becomes an image. The document contains the settings of the active kind only.</summary>
    public sealed unsafe class Tonemapping : TonemappingNode
    {
        /// <summary>A tone mapping of the default kind.</summary>
        public Tonemapping() : base(Create()) { }

        internal Tonemapping(IntPtr node) : base(node) { }

        /// <summary>A tone mapping of a kind.</summary>
        public Tonemapping(TonemappingKind kind) : this() { Kind = kind; }

        private static IntPtr Create() { IntPtr node; Check(Native.VelmarKit_Tonemapping_Create(&node)); return node; }
    }

    /// <summary>The light from around the scene.</summary>
    public sealed unsafe class Background : Node
    {
        internal Background(IntPtr node) : base(node) { }

        /// <summary>Even light from all directions, of a colour with gamma 2.2.</summary>
        public static Background Uniform(Vec3 colour, double strength = 1)
        {
            IntPtr node;
            Check(Native.VelmarKit_Background_CreateUniform(colour.X, colour.Y, colour.Z, strength, &node));
            return new Background(node);
        }

        /// <summary>Sun and sky. The direction towards the sun has z up and length 1; it isn't normalised.</summary>
        public static Background SunSky(Vec3 direction, string model = "captured-simulation")
        {
            IntPtr node;
            fixed (byte* text = Utf8(model))
                Check(Native.VelmarKit_Background_CreateSunSky(direction.X, direction.Y, direction.Z, text, &node));
            return new Background(node);
        }

        /// <summary>The colour of uniform light. A VelmarArgumentException for sun and sky.</summary>
        public Vec3 Colour
        {
            get
            {
                Vec3 v = default(Vec3);
                Check(Native.VelmarKit_Background_GetUniform(Handle, &v.X, &v.Y, &v.Z, null));
                return v;
            }
        }

        /// <summary>The strength of uniform light. A VelmarArgumentException for sun and sky.</summary>
        public double Strength
        {
            get { double v; Check(Native.VelmarKit_Background_GetUniform(Handle, null, null, null, &v)); return v; }
        }

        /// <summary>The direction towards the sun. A VelmarArgumentException for uniform light.</summary>
        public Vec3 Direction
        {
            get
            {
                Vec3 v = default(Vec3);
                Check(Native.VelmarKit_Background_GetSunSky(Handle, &v.X, &v.Y, &v.Z, null, null));
                return v;
            }
        }

        /// <summary>The name of the sky's model. A VelmarArgumentException for uniform light.</summary>
        public string Model
        {
            get
            {
                byte* text;
                ulong size;
                Check(Native.VelmarKit_Background_GetSunSky(Handle, null, null, null, &text, &size));
                return TextOf(text, size);
            }
        }
    }

    /// <summary>A diffuse material: its colour is the reflected part of red, green and blue, 0 to 1, with gamma 2.2.</summary>
    public sealed unsafe class Material : Node
    {
        /// <summary>A material of a colour.</summary>
        public Material(string name, Vec3 colour) : base(Create(name)) { SetColour(name, colour); }

        internal Material(IntPtr node) : base(node) { }

        /// <summary>The colour.</summary>
        public Vec3 Colour
        {
            get { Vec3 v = default(Vec3); Check(Native.VelmarKit_Material_GetColour(Handle, &v.X, &v.Y, &v.Z)); return v; }
            set { SetColour(Name, value); }
        }

        private void SetColour(string name, Vec3 colour)
        {
            IntPtr material;
            fixed (byte* text = Utf8(name))
                Check(Native.VelmarKit_Material_CreateDiffuse(text, colour.X, colour.Y, colour.Z, &material));
            try
            {
                Check(Native.VelmarKit_Material_AddToNode(Handle, material));
            }
            catch
            {
                Native.VelmarKit_Material_Delete((void*)material);
                throw;
            }
        }

        private static IntPtr Create(string name)
        {
            IntPtr node;
            fixed (byte* text = Utf8(name)) Check(Native.VelmarKit_Material_CreateNode(text, &node));
            return node;
        }
    }

    /// <summary>A mesh at a position, with its materials. The scene needs the mesh and the materials too.</summary>
    public sealed unsafe class Model : Node
    {
        /// <summary>A model at the origin.</summary>
        public Model(string name, Mesh mesh, params Material[] materials) : base(Create(name, mesh))
        {
            if (materials.Length != 0) SetMaterials(materials);
        }

        internal Model(IntPtr node) : base(node) { }

        /// <summary>Sets the materials: entry i is for the faces with material index i.</summary>
        public void SetMaterials(params Material[] materials)
        {
            IntPtr[] handles = new IntPtr[materials.Length];
            int held = 0;
            try
            {
                foreach (Material material in materials)
                {
                    bool added = false;
                    material.Handle.DangerousAddRef(ref added);
                    handles[held++] = material.Handle.DangerousGetHandle();
                }
                fixed (IntPtr* first = handles) Check(Native.VelmarKit_Model_SetMaterials(Handle, handles.Length, first));
            }
            finally
            {
                for (int i = 0; i < held; ++i) materials[i].Handle.DangerousRelease();
            }
        }

        /// <summary>Sets the position, in metres, and the rotation as nine numbers, row by row (by default none).</summary>
        public void Place(Vec3 position, float[] rotation = null)
        {
            float[] matrix = rotation ?? new float[] { 1, 0, 0, 0, 1, 0, 0, 0, 1 };
            if (matrix.Length != 9) throw new ArgumentException("rotation must have 9 numbers, not " + matrix.Length);
            float[] place = { (float)position.X, (float)position.Y, (float)position.Z };
            fixed (float* rows = matrix, numbers = place)
                Check(Native.VelmarKit_Model_SetTransformation(Handle, rows, numbers, 0));
        }

        /// <summary>The position, in metres.</summary>
        public Vec3 Position
        {
            get
            {
                Vec3 v = default(Vec3);
                Check(Native.VelmarKit_Model_GetTransformation(Handle, null, (double*)&v, 0));
                return v;
            }
        }

        /// <summary>The mesh; null if there is none, as in a document that lacks it.</summary>
        public Mesh Mesh
        {
            get
            {
                IntPtr mesh;
                Check(Native.VelmarKit_Model_GetGeometry(Handle, &mesh, null));
                return mesh == IntPtr.Zero ? null : new Mesh(mesh);
            }
        }

        /// <summary>The materials; null in a place without one.</summary>
        public Material[] Materials
        {
            get
            {
                ulong count;
                Check(Native.VelmarKit_Model_GetGeometry(Handle, null, &count));
                Material[] materials = new Material[checked((int)count)];
                for (int i = 0; i < materials.Length; ++i)
                {
                    IntPtr material;
                    Check(Native.VelmarKit_Model_GetMaterial(Handle, (ulong)i, &material));
                    materials[i] = material == IntPtr.Zero ? null : new Material(material);
                }
                return materials;
            }
        }

        private static IntPtr Create(string name, Mesh mesh)
        {
            IntPtr node;
            fixed (byte* text = Utf8(name)) Check(Native.VelmarKit_Model_Create(text, mesh.Handle, &node));
            return node;
        }
    }
}
