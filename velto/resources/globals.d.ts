// What pages and engines have beside the standard library's types, for the check of the scripts.

interface Window {
  mraid: any;
  MRAID_ENV: any;
  webkit?: { messageHandlers?: Record<string, { postMessage(message: unknown): void }> };
  omid: any;
  omid3p: any;
  __veltoOMID: any;
}

interface HTMLIFrameElement {
  loading: string;
}
