using System;
using System.Collections.Generic;
using System.Linq;

namespace Velmar
{
    /// <summary>A scene, which holds the nodes that are added to it.</summary>
    public sealed unsafe class Scene : Node
    {
        /// <summary>An empty scene.</summary>
        public Scene() : base(Create()) { }

        private Scene(IntPtr node) : base(node) { }

        /// <summary>Reads a document, and the mesh files that it names. The exception for what is wrong in it has line and
        /// column.</summary>
        public static Scene Read(string path)
        {
            IntPtr scene;
            fixed (byte* text = Utf8(path)) Check(Native.VelmarKit_Scene_Read(text, &scene));
            return new Scene(scene);
        }

        /// <summary>The nodes in the order of adding, without those that have no class here, as spheres. Each call makes
        /// objects of its own for them.</summary>
        public Node[] Nodes
        {
            get
            {
                List<Node> nodes = new List<Node>();
                for (ulong i = 0; i < NodeCount; ++i)
                {
                    Node node = NodeAt(i);
                    if (node != null) nodes.Add(node);
                }
                return nodes.ToArray();
            }
        }

        /// <summary>The first node of a class with this name; null if there is none.</summary>
        public T Find<T>(string name) where T : Node { return Nodes.OfType<T>().FirstOrDefault(node => node.Name == name); }

        /// <summary>Appends a node and returns it. It may be changed later.</summary>
        public T Add<T>(T node) where T : Node
        {
            if (node is Mesh) Check(Native.VelmarKit_Scene_AddMesh(Handle, node.Handle));
            else if (node is Model) Check(Native.VelmarKit_Scene_AddModel(Handle, node.Handle));
            else if (node is Material) Check(Native.VelmarKit_Scene_AddMaterial(Handle, node.Handle));
            else if (node is Background) Check(Native.VelmarKit_Scene_AddBackground(Handle, node.Handle));
            else if (node is Camera) Check(Native.VelmarKit_Scene_AddCamera(Handle, node.Handle));
            else if (node is RenderSettings) Check(Native.VelmarKit_Scene_AddRenderSettings(Handle, node.Handle));
            else if (node is Tonemapping) Check(Native.VelmarKit_Scene_AddTonemapping(Handle, node.Handle));
            else throw new ArgumentException("a " + (node == null ? "null" : node.GetType().Name) + " isn't a node of a scene");
            return node;
        }

        /// <summary>Takes a node out. Models that use it keep it.</summary>
        public void Remove(Node node) { Check(Native.VelmarKit_Scene_RemoveNode(Handle, node.Handle)); }

        /// <summary>Loads a mesh file and adds its mesh, a material for each that the faces use, and a model of them, which
        /// is returned. After a failure, the scene is as before.</summary>
        public Model LoadModel(string path, float scale = 1)
        {
            IntPtr model;
            fixed (byte* text = Utf8(path)) Check(Native.VelmarKit_Scene_LoadModel(Handle, text, scale, &model));
            return new Model(model);
        }

        /// <summary>Adds a light grey square of ground: a mesh, a material and a model.</summary>
        public void AddGroundPlane(double z = 0, double halfSize = 50)
        {
            Check(Native.VelmarKit_Scene_AddGroundPlane(Handle, z, halfSize));
        }

        /// <summary>Adds a light grey material named "Default".</summary>
        public void AddDefaultMaterial() { Check(Native.VelmarKit_create_default_material(Handle)); }

        /// <summary>Adds a background of sun and sky, with the sun in the direction (1, 1, 1).</summary>
        public void AddSunSky() { Check(Native.VelmarKit_create_sunsky(Handle)); }

        /// <summary>The number of nodes.</summary>
        public ulong NodeCount
        {
            get { ulong count; Check(Native.VelmarKit_Scene_GetNodeCount(Handle, &count)); return count; }
        }

        /// <summary>Writes the scene as an XML document, and its meshes as files in a folder next to it. After a failure, a
        /// document that was there is as before.</summary>
        public void Write(string path)
        {
            fixed (byte* text = Utf8(path)) Check(Native.VelmarKit_Scene_WriteToXML(Handle, text));
        }

        private static IntPtr Create() { IntPtr node; Check(Native.VelmarKit_Scene_Create(&node)); return node; }

        private Node NodeAt(ulong index)
        {
            void* node;
            int kind;
            Check(Native.VelmarKit_Scene_GetNode(Handle, index, &node, &kind));
            IntPtr address = (IntPtr)node;
            // The values of VelmarKitNodeKind.
            switch (kind)
            {
                case 1: return new Mesh(address);
                case 2: return new Model(address);
                case 3: return new Material(address);
                case 4: return new Background(address);
                case 5: return new Camera(address);
                case 6: return new RenderSettings(address);
                case 7: return new Tonemapping(address);
                default: return null;
            }
        }
    }

    /// <summary>A render of a scene by the renderer library in the folder "vs2017_64" of the working directory. It holds the
    /// scene. Dispose of it on the thread that uses it: a renderer that is only collected keeps its library loaded.</summary>
    public sealed unsafe class Renderer : IDisposable
    {
        private IntPtr renderer;
        private bool isRunning;

        /// <summary>Loads the renderer library and passes the scene to it.</summary>
        public Renderer(Scene scene)
        {
            IntPtr context;
            IntPtr created = IntPtr.Zero;
            Node.Check(Native.VelmarKit_Context_Create(&context));
            try
            {
                Node.Check(Native.VelmarKit_Context_Initialize(context, null));
                Node.Check(Native.VelmarKit_Renderer_Create(context, &created));
                Node.Check(Native.VelmarKit_Renderer_InitializeWithScene(created, context, scene.Handle));
            }
            catch
            {
                // A renderer owns its context.
                if (created != IntPtr.Zero) Native.VelmarKit_Renderer_Delete(created);
                else Native.VelmarKit_Context_Delete(context);
                throw;
            }
            renderer = created;
        }

        /// <summary>Starts the render, which runs on threads of the renderer library.</summary>
        public void Start() { Node.Check(Native.VelmarKit_Renderer_Start(Live(), null)); isRunning = true; }

        /// <summary>Pauses the render.</summary>
        public void Pause() { Node.Check(Native.VelmarKit_Renderer_Pause(Live(), null)); }

        /// <summary>Resumes the render.</summary>
        public void Resume() { Node.Check(Native.VelmarKit_Renderer_Resume(Live(), null)); }

        /// <summary>Stops the render.</summary>
        public void Stop() { Node.Check(Native.VelmarKit_Renderer_Stop(Live(), null)); isRunning = false; }

        /// <summary>Stops the render and unloads the renderer library.</summary>
        public void Dispose()
        {
            if (renderer == IntPtr.Zero) return;
            if (isRunning) Native.VelmarKit_Renderer_Stop(renderer, null);
            Native.VelmarKit_Renderer_Delete(renderer);
            renderer = IntPtr.Zero;
        }

        private IntPtr Live()
        {
            if (renderer == IntPtr.Zero) throw new ObjectDisposedException(nameof(Renderer));
            return renderer;
        }
    }

    /// <summary>The library itself.</summary>
    public static unsafe class Library
    {
        private static LineCallback callback;

        /// <summary>The version, as "1.0.0".</summary>
        public static string Version { get { return Node.TextOf(Native.VelmarKit_Version()); } }

        /// <summary>Sets who receives the lines that the library reports, as "Num materials: 2", instead of the standard
        /// streams; null for these. The handler gets whether it is a line for the standard error stream, and the line. It
        /// must not throw.</summary>
        public static void SetLineHandler(Action<bool, string> handler)
        {
            LineCallback made = null;
            if (handler != null) made = (user, isError, line) => handler(isError != 0, Node.TextOf(line));
            Node.Check(Native.VelmarKit_SetLineCallback(made, null));
            // The library keeps its address.
            callback = made;
            GC.KeepAlive(callback);
        }
    }
}
