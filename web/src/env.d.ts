declare module 'lucide:*' {
  /** The data of one path. */
  const outline: string;
  export default outline;
}

/** The program's version, set by the build. */
declare const VARNEL_VERSION: string;
