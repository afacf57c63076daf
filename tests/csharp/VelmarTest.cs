// The package for C#, run by Mono: objects, and each kind of failure as a host in C# hears of it.
//
// Usage: VelmarTest.exe FAKE_LIBRARIES
using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;
using Velmar;

internal static unsafe class VelmarTest
{
    private static readonly float[] Corners = { 0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0 };
    private static readonly float[] Square = { 0, 0, 1, 0, 1, 1, 0, 1 };
    private static int failures;

    private static void Check(bool isTrue, string what)
    {
        if (isTrue) return;
        ++failures;
        Console.WriteLine("FAILED: " + what);
    }

    private static void Equal<T>(T found, T wanted, string what)
    {
        Check(EqualityComparer<T>.Default.Equals(found, wanted), what + ": " + found + " instead of " + wanted);
    }

    /// Expects an exception of exactly this class with a text that contains `text`.
    private static void Throws<T>(string text, Action call) where T : Exception
    {
        try
        {
            call();
            Check(false, "nothing was thrown: " + text);
        }
        catch (Exception exception)
        {
            Check(exception.GetType() == typeof(T) && exception.Message.Contains(text), text + ": " + exception);
        }
    }

    private static Mesh MakeSquare()
    {
        Mesh mesh = new Mesh("Square");
        mesh.AddVertices(Corners);
        mesh.AddQuads(new uint[] { 0, 1, 2, 3 });
        mesh.Build();
        return mesh;
    }

    // ---- objects ----

    private static void SceneIsWritten()
    {
        using (Scene scene = new Scene())
        {
            scene.Add(new RenderSettings(640, 480));
            Mesh mesh = scene.Add(MakeSquare());
            Material red = scene.Add(new Material("Rouge Été", new Vec3(0.8, 0.1, 0.1)));
            Model model = scene.Add(new Model("Square", mesh, red));
            scene.Add(Background.SunSky(new Vec3(0, 0, 1)));
            model.Place(new Vec3(1, 2, 3));
            Equal(model.Position.Z, 3.0, "position");
            Equal(model.Materials[0].Name, "Rouge Été", "name");
            Equal(scene.NodeCount, 5UL, "nodes");
            scene.Write("scene.xml");
        }
        string document = File.ReadAllText("scene.xml");
        foreach (string part in new[] { "<width>640</width>", "Rouge Été", "<rgb>0.8 0.1 0.1</rgb>", "sundir" })
            Check(document.Contains(part), "the document has " + part);
    }

    private static void MeshGivesSpansOfItsMemory()
    {
        Mesh mesh = new Mesh("Both");
        mesh.AddVertices(Corners);
        mesh.SetTextureCoordinates(Square);
        mesh.AddTriangles(new uint[] { 0, 1, 2 }, 1, new uint[] { 3, 2, 1 });
        mesh.AddQuads(new uint[] { 0, 1, 2, 3 });
        mesh.SetNormals(Corners);
        Equal(mesh.Build(), 2u, "materials");
        Equal(mesh.Vertices.Length, 12, "vertices");
        Equal(mesh.Normals[3], 1f, "normals");
        Equal(mesh.TextureCoordinates[6], 0f, "texture coordinates");
        Equal(string.Join(" ", mesh.Triangles.ToArray()), "0 1 2 3 2 1 1", "triangles");
        Equal(string.Join(" ", mesh.Quads.ToArray()), "0 1 2 3 0 1 2 3 0", "quads");
        mesh.SetTextureCoordinates(Square, new float[] { 5, 5, 6, 6, 7, 7, 8, 8 });
        Equal(string.Join(" ", mesh.TextureCoordinates.Slice(0, 4).ToArray()), "0 0 5 5", "sets are interleaved");
        Equal(mesh.Counts.UvSets, 2u, "sets");
    }

    private static void SettingsAreReadBack()
    {
        Camera camera = new Camera { Position = new Vec3(0, -5, 0) };
        camera.LookAt(new Vec3(0, 0, 0));
        camera.FieldOfView = Math.PI / 2;
        Equal(camera.Forwards.Y, 1.0, "forwards");
        Check(Math.Abs(camera.LensSensorDistance - 0.018) < 1e-12, "field of view");
        Tonemapping tonemapping = new Tonemapping(TonemappingKind.Camera) { ResponseFunctionPath = "curve.txt" };
        Equal(tonemapping.Kind, TonemappingKind.Camera, "kind");
        Equal(tonemapping.ResponseFunctionPath, "curve.txt", "path");
        RenderSettings settings = new RenderSettings { Metropolis = true };
        Equal(settings.Metropolis, true, "metropolis");
        Material red = new Material("Red", new Vec3(0.8, 0.1, 0.1));
        Equal(red.Colour.X, 0.8, "colour");
        red.Colour = new Vec3(0, 0.5, 1);
        Equal(red.Colour.Y, 0.5, "colour that was set");
        Background uniform = Background.Uniform(new Vec3(1, 0.5, 0.25), 2);
        Equal(uniform.Colour.Z, 0.25, "colour of light");
        Equal(uniform.Strength, 2.0, "strength");
        Throws<VelmarArgumentException>("isn't sun and sky", () => uniform.Model.ToString());
        Background sky = Background.SunSky(new Vec3(0, 0.5, 1), "original");
        Equal(sky.Direction.Y, 0.5, "direction");
        Equal(sky.Model, "original", "model");
    }

    private static void ModelsAreLoaded()
    {
        File.WriteAllText("two.mtl", "newmtl blue\nKd 0 0 1\n");
        File.WriteAllText("two.obj", "mtllib two.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl blue\nf 1 2 3\n");
        using (Scene scene = new Scene())
        {
            Model model = scene.LoadModel("two.obj", 2);
            Equal(model.Materials[0].Name, "blue", "material");
            Equal(model.Mesh.Vertices[3], 2f, "scale");
        }
        MakeSquare().Write("square.vmmesh");
        Equal(Mesh.Load("square.vmmesh").Vertices.Length, 12, "vertices of a file");
    }

    private static void DocumentsAreRead()
    {
        SceneIsWritten();
        using (Scene scene = Scene.Read("scene.xml"))
        {
            Equal(scene.NodeCount, 5UL, "nodes that were read");
            Equal(scene.Nodes.Length, 5, "objects for them");
            RenderSettings settings = (RenderSettings)scene.Nodes[0];
            Equal(settings.Width, 640, "width");
            Check(settings.IsSet("width") && !settings.IsSet("halt_time"), "options that are set");
            Model model = scene.Find<Model>("Square");
            Equal(model.Position.Y, 2.0, "position that was read");
            Equal(model.Mesh.Vertices.Length, 12, "vertices that were read");
            Equal(model.Materials[0].Name, "Rouge Été", "name that was read");
            Check(scene.Find<Camera>("Square") == null, "a camera isn't there");
            model.Place(new Vec3(4, 5, 6));
            scene.Write("scene.xml");
        }
        Check(File.ReadAllText("scene.xml").Contains("<pos>4 5 6</pos>"), "the changed document is written");
        File.WriteAllText("faulty.xml", "<scene>\n<camera><name>c</name></camera></scene>");
        Throws<VelmarDocumentException>("faulty.xml:2:1: error: 'camera' has no element 'uid'", () => Scene.Read("faulty.xml"));
    }

    private static void NodesOutliveTheirScene()
    {
        Camera camera = new Camera();
        using (Scene scene = new Scene()) scene.Add(camera);
        camera.LensRadius = 0.25;
        Equal(camera.LensRadius, 0.25, "radius");
        using (Scene other = new Scene())
        {
            other.Add(camera);
            other.Remove(camera);
            Equal(other.NodeCount, 0UL, "a node is removed");
        }
        // Whatever the order is in which they are collected.
        for (int i = 0; i < 100; ++i) new Scene().Add(new Model("Model", MakeSquare()));
        GC.Collect();
        GC.WaitForPendingFinalizers();
    }

    private static void LinesReachAHandler()
    {
        string lines = "";
        Library.SetLineHandler((isError, line) => lines += line);
        new Model("Model", MakeSquare(), new Material("Red", new Vec3(1, 0, 0)));
        Library.SetLineHandler(null);
        Equal(lines, "Num materials: 1", "lines");
        Equal(Library.Version.Split('.').Length, 3, "version");
    }

    // ---- failures ----

    private static void Failures()
    {
        Scene scene = new Scene();
        Throws<VelmarFileException>("nowhere.obj", () => Mesh.Load("nowhere.obj"));
        Throws<VelmarFileException>("nowhere.ply", () => scene.LoadModel("nowhere.ply"));
        Throws<VelmarFileException>("missing/scene.xml", () => scene.Write("missing/scene.xml"));
        Throws<VelmarFileException>("missing/mesh.vmmesh", () => MakeSquare().Write("missing/mesh.vmmesh"));
        File.WriteAllText("bad.vmmesh", "not a mesh, but long enough for the beginning of one");
        Throws<VelmarMeshException>("Invalid magic number", () => Mesh.Load("bad.vmmesh"));
        Throws<VelmarMeshException>("Unsupported mesh format", () => Mesh.Load("image.png"));
        Mesh mesh = new Mesh("Mesh");
        mesh.AddVertices(Corners);
        mesh.SetNormals(Corners);
        mesh.AddVertices(Corners);
        Throws<VelmarMeshException>("normals.size() must equal verts.size()", () => mesh.Build());
        Throws<VelmarArgumentException>("XML forbids", () => new Mesh("a\x01b"));
        Throws<EncoderFallbackException>("", () => new Mesh("\ud800"));
        Throws<ArgumentException>("zero character", () => new Mesh("a\0b"));
        Throws<ArgumentNullException>("", () => new Mesh((string)null));
        Throws<ArgumentException>("multiple of 3", () => mesh.AddVertices(new float[] { 1, 2 }));
        Throws<VelmarArgumentException>("between 0 and pi", () => new Camera().FieldOfView = 0);
        Throws<ArgumentException>("isn't a node", () => scene.Add(new Scene()));
        Camera closed = new Camera();
        closed.Dispose();
        closed.Dispose();
        Throws<ObjectDisposedException>("", () => closed.LensRadius = 1);
        Throws<ObjectDisposedException>("", () => scene.Add(closed));
        VelmarException base_ = null;
        try { scene.Write("missing/scene.xml"); }
        catch (VelmarException exception) { base_ = exception; }
        Equal(base_.Status, 3, "status");
    }

    [DllImport("VelmarAPI")]
    private static extern IntPtr VelmarMesh_Create(byte* name);
    [DllImport("VelmarAPI")]
    private static extern void VelmarScene_AddMesh(IntPtr scene, IntPtr mesh);

    [StructLayout(LayoutKind.Sequential)]
    private struct Limit
    {
        public ulong Now;
        public ulong Max;
    }
    [DllImport("libc")]
    private static extern int getrlimit(int resource, Limit* limit);
    [DllImport("libc")]
    private static extern int setrlimit(int resource, Limit* limit);
    [DllImport("libc")]
    private static extern IntPtr signal(int number, IntPtr handler);

    private const int FileSize = 1;
    private const int AddressSpace = 9;

    /// Calls `body` with a limit of the system.
    private static void Limited(int resource, ulong value, Action body)
    {
        Limit former, limit;
        getrlimit(resource, &former);
        limit = new Limit { Now = value, Max = former.Max };
        setrlimit(resource, &limit);
        try { body(); }
        finally { setrlimit(resource, &former); }
    }

    private static void FullDisk()
    {
        Scene scene = new Scene();
        for (int i = 0; i < 50; ++i) scene.AddDefaultMaterial();
        const int SizeExceeded = 25;
        signal(SizeExceeded, (IntPtr)1);
        string text = null;
        Limited(FileSize, 4096, () =>
        {
            try { scene.Write("full.xml"); }
            catch (VelmarFileException exception) { text = exception.Message; }
        });
        Check(text != null && text.Contains("Error while writing to 'full.xml'"), "a full disk: " + text);
        Check(!File.Exists("full.xml"), "nothing is left");
        scene.Write("full.xml");
    }

    private static void ExhaustedMemory()
    {
        float[] many = new float[3 << 24];
        Mesh mesh = new Mesh("Mesh");
        ulong pages = ulong.Parse(File.ReadAllText("/proc/self/statm").Split(' ')[0]);
        bool caught = false;
        Limited(AddressSpace, pages * 4096 + (32 << 20), () =>
        {
            try { mesh.AddVertices(many); }
            catch (VelmarOutOfMemoryException) { caught = true; }
        });
        Check(caught, "exhausted memory is reported");
        Equal(mesh.Counts.Vertices, 0UL, "the mesh is alive");
    }

    private static void Renderers(string folder)
    {
        string former = Directory.GetCurrentDirectory();
        var variants = new Dictionary<string, string> {
            { "none", "Failed to load Velmar SDK DLL" }, { "throws", "not today" },
            { "throws_standard", "no room at the inn" }, { "throws_on_create", "thrown by the library" },
            { "create_nothing", "failed to create" }, { "no_create_instance", "unable to get address of procedure" },
            { "good", null } };
        foreach (var variant in variants)
        {
            string place = Path.Combine(former, "render-" + variant.Key);
            Directory.CreateDirectory(Path.Combine(place, "vs2017_64"));
            if (variant.Key != "none")
                foreach (string file in Directory.GetFiles(Path.Combine(folder, variant.Key)))
                    File.Copy(file, Path.Combine(place, "vs2017_64", Path.GetFileName(file)), true);
            Directory.SetCurrentDirectory(place);
            Scene scene = new Scene();
            scene.Add(new RenderSettings(32, 16) { SuperSampleFactor = 1 });
            if (variant.Value != null)
            {
                Throws<VelmarRendererException>(variant.Value, () => new Renderer(scene));
            }
            else
            {
                using (Renderer renderer = new Renderer(scene)) { renderer.Start(); renderer.Pause(); renderer.Resume(); }
            }
            // The host still has it.
            scene.AddSunSky();
            scene.Write("scene.xml");
        }
        Directory.SetCurrentDirectory(former);
    }

    private static void DocumentThatCannotHoldAName()
    {
        Scene scene = new Scene();
        byte[] name = { (byte)'x', 0xff, 0 };
        // The handle is inside the package.
        var handle = (SafeHandle)typeof(Node).GetProperty("Handle", System.Reflection.BindingFlags.NonPublic |
            System.Reflection.BindingFlags.Instance).GetValue(scene, null);
        fixed (byte* text = name) VelmarScene_AddMesh(handle.DangerousGetHandle(), VelmarMesh_Create(text));
        Throws<VelmarDocumentException>("isn't UTF-8", () => scene.Write("name.xml"));
        Check(!File.Exists("name.xml"), "no document is left");
    }

    private static int Main(string[] arguments)
    {
        string folder = Path.Combine(Path.GetTempPath(), Path.GetRandomFileName());
        Directory.CreateDirectory(folder);
        Directory.SetCurrentDirectory(folder);
        SceneIsWritten();
        MeshGivesSpansOfItsMemory();
        SettingsAreReadBack();
        ModelsAreLoaded();
        DocumentsAreRead();
        NodesOutliveTheirScene();
        LinesReachAHandler();
        Failures();
        DocumentThatCannotHoldAName();
        FullDisk();
        ExhaustedMemory();
        Renderers(arguments[0]);
        Directory.SetCurrentDirectory("/");
        Directory.Delete(folder, true);
        Console.WriteLine(failures == 0 ? "all passed" : failures + " failed");
        return failures == 0 ? 0 : 1;
    }
}
